// SPDX-License-Identifier: Zlib
#if defined(__x86_64__)
#include "data/tag_filter_vector.h"
#include "data/text_block_avx2.h"

namespace fenlight {

const TagKernels kAvx2Tags{FilterTagsInBlocks<TextBlock>};

}  // namespace fenlight
#endif
