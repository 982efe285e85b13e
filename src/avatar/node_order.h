// Orders of the FBX node tree that the avatar steps and the import both walk.
#pragma once

#include <vector>

class FbxNode;

// The child nodes of a node, in child order, gathered in one pass over its connections.
std::vector<FbxNode*> ChildNodes(const FbxNode& node);

// All nodes depth first, root first, each before its children, children in order. A node
// reached a second time is not walked again.
std::vector<FbxNode*> NodesDepthFirst(FbxNode* root);
