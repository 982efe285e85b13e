// FBX documents built in memory, for the tests of the libraries that read them.
#pragma once

#include <string>

#include "fbx/fbx_anim.h"
#include "fbx/fbx_document.h"
#include "fbx/fbx_manager.h"
#include "fbx/fbx_node.h"

// A manager with one scene, destroyed with everything in it at the end of the test.
class FbxTestScene {
public:
    FbxTestScene() : manager_(FbxManager::Create()), scene_(FbxScene::Create(manager_, "My Scene")) {}
    ~FbxTestScene() { manager_->Destroy(); }
    FbxTestScene(const FbxTestScene&) = delete;
    FbxTestScene& operator=(const FbxTestScene&) = delete;

    FbxScene* Scene() const { return scene_; }
    FbxNode* Root() const { return scene_->GetRootNode(); }
    // A node named `name` appended to parent's children (the root's when null).
    FbxNode* Node(const std::string& name, FbxNode* parent = nullptr) const {
        FbxNode* node = FbxNode::Create(scene_, name.c_str());
        (parent ? parent : Root())->AddChild(node);
        return node;
    }
    // A stack named `name` with one layer (the base layer), in the scene's stack list.
    FbxAnimLayer* AddStack(const std::string& name) const {
        FbxAnimStack* stack = FbxAnimStack::Create(scene_, name.c_str());
        FbxAnimLayer* layer = FbxAnimLayer::Create(scene_, (name + " layer").c_str());
        stack->ConnectSrcObject(layer);
        return layer;
    }

private:
    FbxManager* manager_;
    FbxScene* scene_;
};
