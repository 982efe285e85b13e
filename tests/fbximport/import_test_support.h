// Helpers of the FBX import tests: documents built in memory, fixture files written with the
// project's FBX writer, captured console output.
#pragma once

#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <vector>

#include "fbx/fbx_document.h"
#include "fbx/fbx_manager.h"
#include "fbx/fbx_node.h"
#include "scene/math.h"

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

private:
    FbxManager* manager_;
    FbxScene* scene_;
};

// A folder of its own in the test process's scratch folder, made empty.
std::string ScratchDir(const std::string& label);
bool WriteBytes(const std::string& path, const std::vector<uint8_t>& bytes);

inline void ExpectVec3(const Vec3& v, float x, float y, float z) {
    EXPECT_FLOAT_EQ(v.x, x);
    EXPECT_FLOAT_EQ(v.y, y);
    EXPECT_FLOAT_EQ(v.z, z);
}

// Rows of axis images and the translation in row 3, as Mat4 keeps them.
inline void ExpectMatrixNear(const Mat4& m, const float (&expected)[16], float tolerance = 1e-6f) {
    for (int k = 0; k < 16; ++k) EXPECT_NEAR(m[k], expected[k], tolerance) << "element " << k;
}
