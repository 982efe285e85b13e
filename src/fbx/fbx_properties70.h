// Property blocks of a file and property templates. Private to the FBX library.
#pragma once

#include <cstdint>
#include <string_view>

class FbxFieldStream;
class FbxObject;

// Reads the Properties70 field of the current block into the object.
void FbxReadProperties70(FbxFieldStream& stream, FbxObject& object);

// Flags that a P record's letters set: A, +, U, H, and L or M with a digit.
// Only the bits of FbxPropertyFlag's animatable, animated, user-defined, hidden, lock
// and mute fields are ever set.
uint32_t FbxParsePropertyFlags(std::string_view letters);

// Gives a new object what its class's template holds: missing properties, values not
// set on the object, and flag bits the object's property lacks.
void FbxApplyTemplate(FbxObject& object, const FbxObject& templateObject);
