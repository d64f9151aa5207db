// SPDX-License-Identifier: Zlib
#include "packing/compressor.h"

#include "packing/stream_writer.h"

namespace fenlight {

uint32_t Compress(const uint8_t *source, uint8_t *destination, uint32_t length, WorkArea &area) noexcept {
    if (length < 2) return 0;
    StreamWriter writer(source, destination);
    Parser parser(source, length, area, writer);
    parser.Run();
    return writer.Finish();
}

}  // namespace fenlight
