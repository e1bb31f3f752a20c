// SPDX-License-Identifier: BSD-3-Clause
// The library's contract table: one file of rows a family in rows/, gathered
// by the build into contract_rows_list.inc (a family adds its file; no list
// is edited by hand).
#include <algorithm>

#include "tests/contract/contract.h"

namespace zeps::contract {

const std::vector<Row>& library_rows() {
    static const std::vector<Row> rows = {
#include "contract_rows_list.inc"
    };
    return rows;
}

}  // namespace zeps::contract
