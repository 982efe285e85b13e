// Text FBX files read once into the binary record layout, so that the field
// stream serves them through the same block and value machinery as binary
// files. Private to the FBX library.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

enum class FbxAsciiFault : uint8_t {
    None,
    UnbalancedBrace,     // a '}' with no open block
    UnclosedBlock,       // the text ends inside a block
    UnterminatedString,  // the text ends inside a string
    BadValue,            // a word that is no number and no single letter, or a number its array cannot hold
    Unexpected,          // a token where a record name belongs
    MissingComma,        // two values with nothing between them
    BadArray,            // an array without its braces, or with something other than numbers inside
    ArrayCount,          // an array whose count is not the number of its elements
    NameTooLong,         // a record name beyond the 255 bytes a record can hold
    TooLarge,            // a string or array beyond the 32-bit lengths of the layout
    OutOfMemory,
};

struct FbxAsciiImage {
    // Header of a little-endian binary file of the given version with 64-bit
    // record words, the text's records, the root terminator; no trailer.
    // Empty unless the text was read to its end.
    std::vector<uint8_t> bytes;
    FbxAsciiFault fault = FbxAsciiFault::None;
    uint64_t faultLine = 0;  // 1-based line of the fault
};

// Reads the whole text (its version line is a comment to the tokenizer).
FbxAsciiImage FbxTranscodeAscii(const uint8_t* text, size_t size, int32_t version);
