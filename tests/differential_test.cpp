// The differential test: every registered export, every kernel behind it at
// every instruction-set level the processor has, and the export itself, each
// on its own random requests against its scalar reference, every byte of
// the guarded planes compared. Host option 128 answers at random (sometimes
// with no settings object at all).
//
// Each case draws from a generator seeded by the run's seed and the case's
// name, so one case repeats on its own:
//   ZENK_TEST_SEED=<n> ZENK_TEST_CASE=<export>:<kernel>:<level>:<index> zenk_tests --gtest_filter='Differential*'
// (<kernel> "export" for the export itself, <level> "-" for it.)

#include <cstdio>
#include <cstdlib>

#include "support/export_registry.h"
#include "support/host_option_fixture.h"

namespace zenk::test {
namespace {

constexpr int kKernelCases = 150;
constexpr int kExportCases = 600;

class Differential : public WithHostSettings<::testing::TestWithParam<size_t>> {
protected:
    // Runs case `index` of `what` unless ZENK_TEST_CASE names another.
    // The export itself (`style` null) takes aligned pictures, any pictures
    // and pair modes at random.
    void RunCase(const std::string& what, int index, const RequestStyle* style,
                 const std::function<void(const Request&)>& convert,
                 const std::function<void(const Request&)>& reference) {
        const std::string id = what + ":" + std::to_string(index);
        static const char* only = std::getenv("ZENK_TEST_CASE");
        if (only != nullptr && *only != '\0' && id != only) return;
        Rng rng(std::hash<std::string>{}(id));
        const RequestStyle drawn =
            style ? *style : RequestStyle{.aligned = rng.Chance(40), .pair_mode = rng.Chance(30) ? kAnyPairMode : 0};
        // What option 128 answers, now and then without a settings object.
        ResetHostSettingsCache();
        ZenkTestSettingsConfigure(rng.Chance(10) ? 1 : 0, rng.Pick(std::vector<int32_t>{0, 1, 0, 1, 7, -1}));
        Scene scene;
        const Request r = BuildGenericRequest(rng, scene, export_(), drawn);
        const ::testing::AssertionResult same = zenk::test::Differential(scene, r, convert, reference);
        if (!same) {
            ADD_FAILURE() << same.message() << "\n  repeat: ZENK_TEST_SEED=" << TestSeed() << " ZENK_TEST_CASE='" << id
                          << "'";
            ++failures_;
        }
    }
    const ExportUnderTest& export_() const { return RegisteredExports()[GetParam()]; }
    int failures_ = 0;
};

TEST_P(Differential, KernelsAndExportMatchReference) {
    const ExportUnderTest& e = export_();
    for (const KernelUnderTest& k : e.kernels)
        for (size_t level = 0; level < kLevelCount; ++level) {
            if (kLevels[level] > ProcessorIsaLevel()) {
                std::printf("%s: %s kernels not run, the processor lacks %s\n", e.name.c_str(), k.name.c_str(),
                            IsaLevelName(kLevels[level]));
                continue;
            }
            const std::string what = e.name + ":" + k.name + ":" + IsaLevelName(kLevels[level]);
            for (int i = 0; i < kKernelCases && failures_ < 3; ++i)
                RunCase(what, i, &k.style, [&](const Request& r) { k.at_level[level](&r); }, k.reference);
        }
    for (int i = 0; i < kExportCases && failures_ < 3; ++i)
        RunCase(e.name + ":export:-", i, nullptr, [&](const Request& r) { e.convert(&r); }, e.reference);
}

INSTANTIATE_TEST_SUITE_P(Registry, Differential, ::testing::Range(size_t{0}, RegisteredExports().size()),
                         [](const auto& info) { return RegisteredExports()[info.param].name; });

}  // namespace
}  // namespace zenk::test
