// The library's bad-input table: requests that keep the caller's invariants,
// however odd, convert exactly and write nothing outside their planes. Run
// over every registered export, and again with every plane placed against
// an inaccessible page, so that any read or write past the extent a kernel
// is documented to touch faults.
#include <gtest/gtest.h>

#include "support/export_registry.h"

namespace zenk::test {
namespace {

struct EnvelopeRow {
    const char* what;
    RequestStyle style;
    // Applied after the request is built.
    void (*adjust)(Request&);
};

void NoChange(Request&) {}
void AlphaZero(Request& r) { r.alpha_value = 0; }
void AlphaAllOnes(Request& r) { r.alpha_value = 0xFFFFFFFFu; }
void AlphaHighWordOnly(Request& r) { r.alpha_value = 0xFFFF0000u; }

std::vector<EnvelopeRow> EnvelopeRows() {
    std::vector<EnvelopeRow> rows = {
        {"width 0", {.width = 0}, NoChange},
        {"width 1", {.width = 1}, NoChange},
        {"width 2", {.width = 2}, NoChange},
        {"height 0", {.height = 0}, NoChange},
        {"height 1", {.height = 1}, NoChange},
        {"every plane bottom-up", {.bottom_up_percent = 100}, NoChange},
        {"alpha_value 0", {}, AlphaZero},
        {"alpha_value 0xFFFFFFFF", {}, AlphaAllOnes},
        {"alpha_value 0xFFFF0000", {}, AlphaHighWordOnly},
        {"aligned planes", {.aligned = true}, NoChange},
        {"line-pair modes", {.pair_mode = kAnyPairMode}, NoChange},
        {"line-pair modes, width 1", {.width = 1, .pair_mode = kAnyPairMode}, NoChange},
        {"line-pair modes, no source lines", {.height = 0, .pair_mode = kAnyPairMode}, NoChange},
        {"line-pair modes, every plane bottom-up", {.bottom_up_percent = 100, .pair_mode = kAnyPairMode}, NoChange},
    };
    static const std::vector<std::string> kOffsets = [] {
        std::vector<std::string> names;
        for (int residue = 0; residue < 16; ++residue) names.push_back("destination at 16+" + std::to_string(residue));
        return names;
    }();
    for (int32_t residue = 0; residue < 16; ++residue)
        rows.push_back({kOffsets[residue].c_str(), {.residue = residue}, NoChange});
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
                row.adjust(r);
                ASSERT_TRUE(Differential(scene, r, [&](const Request& q) { e.convert(&q); }, e.reference))
                    << e.name << ": " << row.what;
            }
        }
    }
}

TEST(Envelope, OddRequestsConvertExactlyAndStayInTheirPlanes) { RunEnvelope(GuardPage::kNone, 12); }

TEST(Envelope, NothingReadOrWrittenPastTheLastLine) {
    if (!GuardPagesAvailable()) GTEST_SKIP() << "no guard pages on this system";
    RunEnvelope(GuardPage::kAfterEnd, 3);
}

TEST(Envelope, NothingReadOrWrittenBeforeTheFirstLine) {
    if (!GuardPagesAvailable()) GTEST_SKIP() << "no guard pages on this system";
    RunEnvelope(GuardPage::kBeforeStart, 3);
}

}  // namespace
}  // namespace zenk::test
