// The library's bad-input table: requests that keep the caller's invariants,
// however odd, convert exactly and write nothing outside their planes. Run
// over every registered export, and again with every plane placed against
// an inaccessible page, so that any read or write past the extent a kernel
// is documented to touch faults.
//
// The guard pages those runs rely on: a byte just past the bytes, or just
// before them, must fault, and be reported as an access fault at that very
// address, or a kernel that strays there would pass unseen. On Windows this
// is also what the emulated 32-bit route must get right: Wine turns the
// processor's page fault into an access violation only when the signal
// carries the fault's trap number.

#include <cstdlib>

#include "support/export_registry.h"

#if defined(_WIN32)
#include <windows.h>
#else
#include <csignal>
#include <unistd.h>
#endif

namespace zenk::test {
namespace {

struct EnvelopeRow {
    std::string what;
    RequestStyle style;
    int64_t alpha_value = -1;  // set after the request is built, unless -1
};

std::vector<EnvelopeRow> EnvelopeRows() {
    std::vector<EnvelopeRow> rows = {
        {"width 0", {.width = 0}}, {"width 1", {.width = 1}}, {"width 2", {.width = 2}},
        {"height 0", {.height = 0}}, {"height 1", {.height = 1}}, {"every plane bottom-up", {.bottom_up_percent = 100}},
        {"alpha_value 0", {}, 0}, {"alpha_value 0xFFFFFFFF", {}, 0xFFFFFFFF}, {"alpha_value 0xFFFF0000", {}, 0xFFFF0000},
        {"aligned planes", {.aligned = true}}, {"line-pair modes", {.pair_mode = kAnyPairMode}},
        {"line-pair modes, width 1", {.width = 1, .pair_mode = kAnyPairMode}},
        {"line-pair modes, no source lines", {.height = 0, .pair_mode = kAnyPairMode}},
        {"line-pair modes, every plane bottom-up", {.bottom_up_percent = 100, .pair_mode = kAnyPairMode}},
    };
    for (int32_t residue = 0; residue < 16; ++residue)
        rows.push_back({"destination at 16+" + std::to_string(residue), {.residue = residue}});
    return rows;
}

void RunEnvelope(GuardPage guard, int iterations) {
    const auto& exports = RegisteredExports();
    ASSERT_FALSE(exports.empty());
    Rng rng(static_cast<uint64_t>(guard) + 77);
    for (const ExportUnderTest& e : exports) {
        if (guard != GuardPage::kNone && !e.lines_bound_writes) continue;
        for (const EnvelopeRow& row : EnvelopeRows()) {
            RequestStyle style = row.style;
            style.guard_page = guard;
            style.even_width = guard != GuardPage::kNone;
            // Destination offsets the export does not allow are not in its envelope.
            if (style.residue >= 0 && style.residue % e.dst.line_alignment != 0) continue;
            if (style.pair_mode != 0 && e.pair_modes.empty()) continue;
            for (int i = 0; i < iterations; ++i) {
                Scene scene;
                Request r = BuildGenericRequest(rng, scene, e, style);
                if (row.alpha_value >= 0) r.alpha_value = static_cast<uint32_t>(row.alpha_value);
                ASSERT_TRUE(Differential(scene, r, [&](const Request& q) { e.convert(&q); }, e.reference))
                    << e.name << ": " << row.what;
            }
        }
    }
}

TEST(Envelope, OddRequestsConvertExactlyAndStayInTheirPlanes) { RunEnvelope(GuardPage::kNone, 12); }

TEST(Envelope, NothingReadOrWrittenPastTheLastLine) { RunEnvelope(GuardPage::kAfterEnd, 3); }

TEST(Envelope, NothingReadOrWrittenBeforeTheFirstLine) { RunEnvelope(GuardPage::kBeforeStart, 3); }

// ---- The guard pages --------------------------------------------------------------------------

// Exit codes of the child that touches a guard: the fault was the expected
// one, or another fault.
constexpr int kFaultedThere = 42, kOtherFault = 43;

volatile uint8_t* g_expected_address = nullptr;
volatile bool g_expect_write = false;

#if defined(_WIN32)
LONG CALLBACK OnException(EXCEPTION_POINTERS* e) {
    const EXCEPTION_RECORD& x = *e->ExceptionRecord;
    // ExceptionInformation: 0 for a read, 1 for a write; then the address.
    const bool there = x.ExceptionCode == EXCEPTION_ACCESS_VIOLATION && x.NumberParameters >= 2 &&
                       x.ExceptionInformation[1] == reinterpret_cast<ULONG_PTR>(g_expected_address) &&
                       x.ExceptionInformation[0] == (g_expect_write ? 1u : 0u);
    TerminateProcess(GetCurrentProcess(), there ? kFaultedThere : kOtherFault);
    return EXCEPTION_CONTINUE_SEARCH;
}
void CatchFaults() { AddVectoredExceptionHandler(1, OnException); }
#else
void OnFault(int signal, siginfo_t* info, void*) {
    const bool there = signal == SIGSEGV && info->si_addr == static_cast<void*>(const_cast<uint8_t*>(g_expected_address));
    _exit(there ? kFaultedThere : kOtherFault);
}
void CatchFaults() {
    struct sigaction action = {};
    action.sa_sigaction = OnFault;
    action.sa_flags = SA_SIGINFO;
    sigaction(SIGSEGV, &action, nullptr);
    sigaction(SIGBUS, &action, nullptr);
}
#endif

// Touches `p` (a read, or a write) in the death-test child; the fault
// handler ends the child with the verdict.
void Touch(volatile uint8_t* p, bool write) {
    g_expected_address = p;
    g_expect_write = write;
    CatchFaults();
    if (write)
        *p = 1;
    else
        (void)*p;
    std::exit(0);  // no fault at all
}

TEST(GuardPages, TouchingEitherNeighbourFaultsAtThatByte) {
    // The child is a fork of this process: a new process image would not start
    // under a user-mode emulator that is not registered with the kernel (the
    // Arm suite's qemu-aarch64). Windows always starts a new one.
    for (bool after : {true, false})  // the page after the bytes, else the one before
        for (bool write : {false, true}) {
            const AlignedBytes bytes = AlignedBytes::BetweenGuardPages(100);
            // Every byte of the pages between the guards is there to use.
            bytes[0] = 1;
            bytes[bytes.size() - 1] = 1;
            volatile uint8_t* target = after ? bytes.end() : bytes.begin() - 1;
            EXPECT_EXIT(Touch(target, write), ::testing::ExitedWithCode(kFaultedThere), "")
                << (write ? "write " : "read ") << (after ? "after the end" : "before the start");
        }
}

}  // namespace
}  // namespace zenk::test
