#include "scene/scene.h"

GraphNode::~GraphNode() {
    for (GraphNode* child : children) delete child;
}

void GraphNode::AddChild(GraphNode* child) {
    children.push_back(child);
    if (child) child->parent = this;
}

void GraphNode::RemoveChild(GraphNode* child) {
    for (size_t i = 0; i < children.size(); ++i) {
        if (children[i] != child) continue;
        children.erase(children.begin() + static_cast<std::ptrdiff_t>(i));
        delete child;  // deleting null is a no-op
    }
}

Scene::~Scene() {
    delete root;
    root = nullptr;
}
