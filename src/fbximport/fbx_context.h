// The FBX layer's context for one load: the manager that owns every object, the import
// settings and the document the file is read into.
// Private to the fbximport library.
#pragma once

#include <cstdio>
#include <string>

class FbxManager;
class FbxScene;

struct FbxContext {
    FbxManager* manager = nullptr;
    FbxScene* scene = nullptr;
};

// Makes the manager, the import settings and the document "My Scene", printing the layer's
// version. A context that cannot be made ends the run.
FbxContext InitializeFbxContext();

// Reads the file into the context's document, with the console lines of a load; asks once
// for a password when the file wants one. False when the file could not be read.
// `passwordInput` is where the password is read from (standard input in the tool).
bool ImportFbxFile(FbxContext& context, const std::string& fileName, std::FILE* passwordInput = stdin);

// Destroys the manager with everything it holds, the document too.
void DestroyFbxContext(FbxContext& context);
