// Byte-level escaping shared by the value makers and the emitter. Private to
// the JSON library.
#pragma once

#include <cstddef>

inline constexpr size_t kEscapeMax = 6;

// Writes the escaped form of one byte into out (kEscapeMax bytes); returns its length.
size_t EscapeByte(unsigned char c, char* out);
// True if a backslash followed by this byte is one of the eight escape pairs.
bool IsEscapePair(char second);
