// SPDX-License-Identifier: Zlib
#if defined(__x86_64__)
#include "data/tab_expansion_vector.h"
#include "data/text_block_avx512.h"

namespace fenlight {

const TabKernels kAvx512Tabs{ExpandTabsInBlocks<TextBlock>};

}  // namespace fenlight
#endif
