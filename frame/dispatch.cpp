// SPDX-License-Identifier: BSD-3-Clause
// The dispatch table: for every export, in export-list order, the pair of
// implementations {build 0 "u8", build 1 "n8"}. The forwarding entries in
// entries.S index their own pair with the variant index.
#include "frame/variants.h"

using ZepsCode = void (*)();

extern "C" {
__attribute__((visibility("hidden"))) extern const ZepsCode zeps_dispatch[][2];
const ZepsCode zeps_dispatch[][2] = {
#define ZEPS_FN(ret, name, params) \
    {reinterpret_cast<ZepsCode>(&zeps::u8::name), reinterpret_cast<ZepsCode>(&zeps::n8::name)},
#include "zepsc_exports.inc"
#undef ZEPS_FN
};
}
