#include "phonebook/csv/mapped_copy.h"

#include <windows.h>

// The compiler has no words for structured exception handling, and a handler of the whole process is not a guest's to
// install. So the copy is written out, with a scope table for the system's own handler of such tables: the copying
// instruction is the guarded scope, and when the filter takes the exception the function goes on behind it. The
// function is a frame like any other, so exceptions of no concern to it pass through.
asm(R"(
    .text
    .p2align 4
    .def qx_copy_mapped; .scl 3; .type 32; .endef
    .seh_proc qx_copy_mapped
qx_copy_mapped:
    pushq %rdi
    .seh_pushreg %rdi
    pushq %rsi
    .seh_pushreg %rsi
    subq $40, %rsp
    .seh_stackalloc 40
    .seh_endprologue
    movq %rcx, %rdi
    movq %rdx, %rsi
    movq %r8, %rcx
.Lqx_copy_begin:
    rep movsb
.Lqx_copy_end:
    movl $1, %eax
    jmp .Lqx_copy_return
.Lqx_copy_failed:
    xorl %eax, %eax
.Lqx_copy_return:
    addq $40, %rsp
    popq %rsi
    popq %rdi
    ret
    .seh_handler __C_specific_handler, @except
    .seh_handlerdata
    .long 1
    .rva .Lqx_copy_begin, .Lqx_copy_end, qx_is_page_error, .Lqx_copy_failed
    .text
    .seh_endproc
)");

extern "C" {
int QxCopyMapped(void* to, const void* from, std::size_t bytes) asm("qx_copy_mapped");
// Kept although only the table names it.
[[gnu::used]] LONG QxIsPageError(const EXCEPTION_POINTERS* exception, void* frame) noexcept asm("qx_is_page_error");
}

LONG QxIsPageError(const EXCEPTION_POINTERS* exception, void*) noexcept
{
    return exception->ExceptionRecord->ExceptionCode == EXCEPTION_IN_PAGE_ERROR ? EXCEPTION_EXECUTE_HANDLER
                                                                                : EXCEPTION_CONTINUE_SEARCH;
}

namespace qx {

bool CopyMapped(void* to, const void* from, std::size_t bytes) noexcept
{
    return QxCopyMapped(to, from, bytes) != 0;
}

} // namespace qx
