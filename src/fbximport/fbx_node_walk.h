// Steps of the load that walk the FBX node tree and the converted scene.
// Private to the fbximport library.
#pragma once

#include <vector>

#include "avatar/node_order.h"

class FbxNode;
class Scene;

// Renames nodes whose name was seen before, breadth first from the root: the second "foot"
// becomes "foot.001", the third "foot.002", skipping names already taken. The first
// occurrence, nearest the root, keeps its name.
void MakeNodeNamesUnique(FbxNode* root);

// Brings a scene read from a file of another unit than metres to runtime scale, moving the
// remaining factor out of the root, the top nodes and their tracks. unitScale is the file's
// unit in centimetres, read before any conversion.
void ApplyUnitScale(Scene& scene, float unitScale);
