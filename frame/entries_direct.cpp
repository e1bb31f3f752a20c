// SPDX-License-Identifier: BSD-3-Clause
// Forwarding entries of a library with one processor build (hosts other than
// x86-64): every export calls the generic build's implementation directly;
// there is no table and no load-time choice. The compiler turns each entry
// into a tail jump.
#include "frame/variants.h"

extern "C" {
#define ZEPS_FWD(ret, name, params, args)                      \
    __attribute__((visibility("default"))) ret name params { \
        return zeps::ZEPS_VARIANT_NS::name args;             \
    }
#include "zepsc_forward.inc"
#undef ZEPS_FWD
}
