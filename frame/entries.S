/* SPDX-License-Identifier: BSD-3-Clause */
/*
 * Forwarding entries, one per export, generated from the export list.
 *
 * Each entry loads the module-wide variant index (sign-extended), takes the
 * address of its own pair in the dispatch table and jumps through the slot
 * the index selects. No prologue, no call, no stack access: every argument
 * register and the stack reach the implementation untouched, and it returns
 * straight to the caller. %rax and %r11 are scratch registers that carry no
 * arguments of these (non-variadic) functions.
 *
 * x86-64 has no RIP-relative indexed addressing, so a position-independent
 * entry forms the pair's address with one lea between the load and the jump.
 */
    .text
    .hidden zeps_variant
    .hidden zeps_dispatch

.macro ZEPS_ENTRY name, index
    .globl \name
    .type \name, @function
    .p2align 4
\name:
    movslq zeps_variant(%rip), %rax
    leaq zeps_dispatch + 16 * (\index)(%rip), %r11
    jmp *(%r11, %rax, 8)
    .size \name, . - \name
.endm

#define ZEPS_FN(ret, name, params) ZEPS_ENTRY name, __COUNTER__
#include "zepsc_exports.inc"

    .section .note.GNU-stack, "", @progbits
