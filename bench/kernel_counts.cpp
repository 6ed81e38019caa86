// Instruction counts of every kernel behind every export at 1920x1080, for
// callgrind (bench/instruction_counts.sh): each kernel runs once, at each
// level valgrind and the processor run, on the request the test registry
// builds for it from the run's seed; only the kernel call is instrumented, and
// its count is dumped under the name <export>:<kernel>:<level>. The same
// seed gives the same requests in any build with the same registry, so two
// builds' counts compare kernel by kernel.
#include <valgrind/callgrind.h>

#include <cstdio>
#include <cstdlib>
#include <string>

#include "support/export_registry.h"

int main(int argc, char** argv) {
    using namespace zenk;
    using namespace zenk::test;
    // The widest level to count: valgrind runs no AVX-512 code.
    const IsaLevel widest = CapIsaLevel(ProcessorIsaLevel(), argc > 1 ? argv[1] : "avx2");
    // Only the kernels whose name holds this text (all: none given).
    const std::string only = argc > 2 ? argv[2] : "";
    for (const ExportUnderTest& e : RegisteredExports())
        for (const KernelUnderTest& k : e.kernels)
            for (size_t level = 0; level < kLevelCount; ++level) {
                if (kLevels[level] > widest) continue;
                const std::string name = e.name + ":" + k.name + ":" + IsaLevelName(kLevels[level]);
                if (name.find(only) == std::string::npos) continue;
                Rng rng(std::hash<std::string>{}(name));
                RequestStyle style = k.style;
                style.width = 1920;
                style.height = 1080;
                style.reduced_lines = style.pair_mode == 1 ? 540 : 270;  // by 2 or by 4
                style.bottom_up_percent = 0;
                Scene scene;
                Request r = BuildGenericRequest(rng, scene, e, style);
                // Pair modes with line addressing, not the modes that convert nothing.
                if (style.pair_mode != 0) r.scan_mode = 1;
                CALLGRIND_START_INSTRUMENTATION;
                CALLGRIND_TOGGLE_COLLECT;
                k.at_level[level](&r);
                CALLGRIND_TOGGLE_COLLECT;
                CALLGRIND_STOP_INSTRUMENTATION;
                CALLGRIND_DUMP_STATS_AT(name.c_str());
            }
    return 0;
}
