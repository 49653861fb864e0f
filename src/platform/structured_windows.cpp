// SPDX-License-Identifier: MIT
#include "platform/structured_windows.h"

#if defined(__GNUC__) && defined(__x86_64__)

// What __try and __except would become: a function with a scope table for the system's own handler. In assembly as a
// whole, so that no optimiser has a say in what lies inside the scope.
//
// Frame: 32 bytes for the callee, the filter at 32, its context at 40. The handler hands the frame to the filter.
asm(R"(
	.text
	.globl ky_call_filtered
	.def ky_call_filtered; .scl 2; .type 32; .endef
	.seh_proc ky_call_filtered
ky_call_filtered:
	subq $56, %rsp
	.seh_stackalloc 56
	.seh_endprologue
	movq %r8, 32(%rsp)
	movq %r9, 40(%rsp)
	movq %rcx, %rax
	movq %rdx, %rcx
.Lky_scope_begin:
	call *%rax
	nop
.Lky_scope_end:
	movl $1, %eax
	jmp .Lky_leave
.Lky_given_up:
	xorl %eax, %eax
.Lky_leave:
	addq $56, %rsp
	ret
	.seh_handler __C_specific_handler, @except
	.seh_handlerdata
	.long 1
	.rva .Lky_scope_begin, .Lky_scope_end, ky_call_filter, .Lky_given_up
	.text
	.seh_endproc

	.def ky_call_filter; .scl 3; .type 32; .endef
ky_call_filter:
	movq 32(%rdx), %rax
	movq 40(%rdx), %rdx
	jmp *%rax
)");

extern "C" int ky_call_filtered(void (*fn)(void*), void* arg, ky::impl::native::StructuredFilter filter, void* context);

bool ky::impl::native::callFiltered(void (*fn)(void*), void* arg, StructuredFilter filter, void* context)
{
    return ky_call_filtered(fn, arg, filter, context) != 0;
}

#else

bool ky::impl::native::callFiltered(void (*fn)(void*), void* arg, StructuredFilter filter, void* context)
{
    __try
    {
        fn(arg);
        return true;
    }
    __except (filter(GetExceptionInformation(), context))
    {
        return false;
    }
}

#endif
