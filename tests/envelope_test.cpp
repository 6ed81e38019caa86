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

}  // namespace
}  // namespace zenk::test
