// SPDX-License-Identifier: Zlib
// What the benchmarks of pictures share.
#pragma once

#include <benchmark/benchmark.h>

namespace fenlight {

// Times `work` on a picture whose width and height are the arguments of the benchmark. An item is a pixel.
template <typename Work>
void Measure(benchmark::State &state, const Work &work) {
    for (auto _ : state) {
        work();
        benchmark::ClobberMemory();
    }
    state.SetItemsProcessed(state.iterations() * state.range(0) * state.range(1));
}

}  // namespace fenlight
