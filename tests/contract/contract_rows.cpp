// The library's contract table: the rows in place plus the enabled blocks
// of contract_rows_pending.inc.
#include <algorithm>

#include "tests/contract/contract.h"
#include "tests/contract/enabled_families.h"

namespace zeps::contract {

const std::vector<Row>& library_rows() {
    static const std::vector<Row> rows = {
#include "tests/contract/contract_rows.inc"
#include "tests/contract/contract_rows_pending.inc"
    };
    return rows;
}

}  // namespace zeps::contract
