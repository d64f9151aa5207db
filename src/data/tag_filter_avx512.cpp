// SPDX-License-Identifier: Zlib
#if defined(__x86_64__)
#include "data/tag_filter_vector.h"
#include "data/text_block_avx512.h"

namespace fenlight {

const TagKernels kAvx512Tags{FilterTagsInBlocks<TextBlock>};

}  // namespace fenlight
#endif
