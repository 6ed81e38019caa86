/*
 * Preloaded into the i386 programs of the emulated Wine route
 * (scripts/wine32-root.sh). QEMU's user-mode emulation delivers a fault
 * signal with the trap number of the 32-bit signal context at -1, where a
 * processor puts the exception vector; Wine's i386 fault handlers turn the
 * vector into the Windows exception (an access violation for a page fault).
 * This wraps the handlers a program installs for the fault signals and
 * fills a missing trap number from the signal before the program's handler
 * sees it. Everything else passes through unchanged: where the trap number
 * is already set, nothing is touched.
 */
#define _GNU_SOURCE
#include <dlfcn.h>
#include <signal.h>
#include <stddef.h>
#include <ucontext.h>

/* The processor's exception vectors. */
enum {
    kDivideError = 0,
    kBreakpoint = 3,
    kOverflow = 4,
    kInvalidOpcode = 6,
    kProtectionFault = 13,
    kPageFault = 14,
    kFloatingPoint = 16
};

typedef int (*SigactionFn)(int, const struct sigaction*, struct sigaction*);

/* The program's own handlers of the fault signals, by signal number. */
static struct sigaction g_program[NSIG];
static volatile sig_atomic_t g_wrapped[NSIG];

static SigactionFn RealSigaction(void) {
    static SigactionFn real;
    if (real == NULL) real = (SigactionFn)dlsym(RTLD_NEXT, "sigaction");
    return real;
}

static int IsFaultSignal(int signal) {
    return signal == SIGSEGV || signal == SIGBUS || signal == SIGILL || signal == SIGTRAP || signal == SIGFPE;
}

static int TrapNumber(int signal, const siginfo_t* info) {
    switch (signal) {
    case SIGSEGV:
        /* A kernel-sent SIGSEGV without an address is a protection fault. */
        return info->si_code == SI_KERNEL ? kProtectionFault : kPageFault;
    case SIGBUS:
        return kProtectionFault;
    case SIGILL:
        return kInvalidOpcode;
    case SIGTRAP:
        return kBreakpoint;
    default: /* SIGFPE */
        return info->si_code == FPE_INTDIV ? kDivideError : info->si_code == FPE_INTOVF ? kOverflow : kFloatingPoint;
    }
}

static void Wrapper(int signal, siginfo_t* info, void* context) {
    ucontext_t* uc = (ucontext_t*)context;
    if (uc != NULL && uc->uc_mcontext.gregs[REG_TRAPNO] == -1)
        uc->uc_mcontext.gregs[REG_TRAPNO] = TrapNumber(signal, info);
    const struct sigaction* own = &g_program[signal];
    if (own->sa_flags & SA_SIGINFO)
        own->sa_sigaction(signal, info, context);
    else if (own->sa_handler != SIG_DFL && own->sa_handler != SIG_IGN)
        own->sa_handler(signal);
}

int sigaction(int signal, const struct sigaction* act, struct sigaction* old) {
    SigactionFn real = RealSigaction();
    if (signal <= 0 || signal >= NSIG || !IsFaultSignal(signal)) return real(signal, act, old);
    const struct sigaction previous = g_program[signal];
    const int was_wrapped = g_wrapped[signal];
    int result;
    if (act != NULL && (act->sa_flags & SA_SIGINFO || (act->sa_handler != SIG_DFL && act->sa_handler != SIG_IGN))) {
        struct sigaction wrapped = *act;
        wrapped.sa_sigaction = Wrapper;
        wrapped.sa_flags |= SA_SIGINFO;
        g_program[signal] = *act;
        result = real(signal, &wrapped, old);
        g_wrapped[signal] = 1;
    } else {
        result = real(signal, act, old);
        if (act != NULL) g_wrapped[signal] = 0;
    }
    /* The program sees its own handler, never the wrapper. */
    if (result == 0 && old != NULL && was_wrapped) *old = previous;
    return result;
}
