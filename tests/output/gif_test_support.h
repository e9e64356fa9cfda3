#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace lumiquilt::testing {

/// The parts of a GIF file that the encoder writes, read back independently.
struct ParsedGif {
    std::string signature;
    int width = 0;
    int height = 0;
    bool hasControl = false;
    int transparentIndex = -1;
    std::vector<uint8_t> table;
    std::vector<int> blockSizes;  ///< count byte of each data sub-block
    std::vector<int> codes;       ///< codes as read, clear and end included
    std::vector<uint8_t> pixels;  ///< LZW-decoded indices, rows top-down
    bool endsProperly = false;    ///< terminator and trailer at the very end
};

/// Parses and decodes a GIF of the encoder's shape with a decoder of its own that
/// follows the standard (variable code width, clear and end codes).
ParsedGif parseGif(const std::string& bytes);

}  // namespace lumiquilt::testing
