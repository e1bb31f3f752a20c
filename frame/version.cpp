// SPDX-License-Identifier: BSD-3-Clause
// The version records, compiled once: the two x86-64 builds and the
// generic build of other hosts. All records point at the same
// version and build-date text objects.
#include "frame/version.h"

namespace zeps {
namespace {
constexpr char kVersionText[] = "8.1.1 (r42291)";
constexpr char kBuildDate[] = "Apr 10 2014";
}  // namespace

const ZepLibraryVersion kLibVersion[3] = {
    {8, 1, 1, 42291, {'u', '8', 0, 0}, "zepSC SSSE3 (u8)", kVersionText, kBuildDate},
    {8, 1, 1, 42291, {'n', '8', 0, 0}, "zepSC Lumo (n8)", kVersionText, kBuildDate},
    {8, 1, 1, 42291, {'g', 'e', 'n', 0}, "zepSC generic (gen)", kVersionText, kBuildDate},
};

}  // namespace zeps
