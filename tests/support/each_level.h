// SPDX-License-Identifier: Zlib
// One case for every version of a routine that this processor has.
#pragma once

#include <gtest/gtest.h>

#include <string>

#include "frame/vector_level.h"

namespace fenlight {

template <typename Check>
void WithEachLevel(Check check) {
    for (int level = 0; level <= static_cast<int>(WidestVectorLevel()); ++level) {
        ForceVectorLevel(static_cast<VectorLevel>(level));
        SCOPED_TRACE("vector level " + std::to_string(level));
        check();
    }
    ReleaseVectorLevel();
}

// INSTANTIATE_TEST_SUITE_P(Levels, <a class of this>, kEachLevel): tests one by one at each level.
class EachLevel : public testing::TestWithParam<VectorLevel> {
  protected:
    void SetUp() override { ForceVectorLevel(GetParam()); }
    void TearDown() override { ReleaseVectorLevel(); }
};
inline const auto kEachLevel =
    testing::Values(VectorLevel::Plain, VectorLevel::Sse4, VectorLevel::Avx2, VectorLevel::Avx512);

}  // namespace fenlight
