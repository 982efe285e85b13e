// The value codes that text FBX values take when a text file is read into the
// binary record layout. Private to the FBX library.
//
// Text carries no codes: "1" may be an int, a 64-bit id or a double. The codes
// chosen here are the ones the authoring tools give the same values in their
// binary files, so that every reader finds exactly what a binary twin holds
// (ReadDouble takes only 'D'/'F', array reads demand their exact code).
#pragma once

#include <string_view>

enum class FbxAsciiRecordKind : unsigned char {
    Plain,       // integers 'I' (or 'L' when they do not fit), reals 'D'
    Property,    // P: numbers behind the four strings by the property's type
    Ids,         // every number is a 64-bit id or time: 'L'
    FirstId,     // object records: the first value is the id, 'L'
    Reals,       // every number is a double: 'D'
    Raw,         // the strings together are one raw value 'R' (base64 or as written)
};

struct FbxAsciiRecordRule {
    FbxAsciiRecordKind kind = FbxAsciiRecordKind::Plain;
    // Code of an array value: 'b' 'c' 'i' 'l' 'f' 'd', or 0 to choose by content
    // ('i', 'l' when an element needs 64 bits, 'd' when one is not an integer).
    char arrayCode = 0;
    // Key attribute data: integers are the bits of the floats, as the tools
    // write them; an array with any real in it holds the float values instead.
    bool floatBits = false;
};

// The rule for a record of that name inside a record named parent ("" at the
// top level).
FbxAsciiRecordRule FbxAsciiRuleFor(std::string_view name, std::string_view parent);

// Code of the numbers of a P record whose type (its second string) is given:
// 'I', 'L', 'F', 'Z' or 'D'.
char FbxAsciiPropertyCode(std::string_view typeName);
