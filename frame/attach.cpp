// SPDX-License-Identifier: BSD-3-Clause
// Load-time entry: chooses the processor build once, when the module is
// attached to a process, and stores it in the one module-wide variant index
// that every forwarding entry reads.
#include "core/zepcore.h"
#include "frame/select_variant.h"

extern "C" {
/// 0 = build "u8", 1 = build "n8". Written only at process attach.
__attribute__((visibility("hidden"))) std::int32_t zeps_variant = 0;
}

namespace zeps {

inline constexpr int kProcessAttach = 1;

/// The module's load-time entry. For reason 1 (process attach) it reads the
/// core library's feature mask and records the build; every other reason
/// (detach, thread attach or detach) does nothing. Loading never fails.
int module_entry(int reason) {
    if (reason == kProcessAttach) zeps_variant = select_variant(zepGetEnabledCpuFeatures());
    return 1;
}

}  // namespace zeps

// The ELF loader runs this once, after relocation and before any export can
// be called; it is the process-attach notification.
__attribute__((constructor)) static void zeps_on_process_attach() { zeps::module_entry(zeps::kProcessAttach); }
