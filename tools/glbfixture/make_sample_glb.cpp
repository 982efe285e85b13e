// Writes the project's sample GLB: a small textured column with a two-bone skin, one
// morph target and an animation that bends and lifts the top bone and pulses the morph
// weight.
//   vurl_make_sample_glb <out.glb>
#include <cmath>
#include <cstdio>

#include "glb_fixture.h"

using namespace glbfixture;

int main(int argc, char** argv) {
    if (argc != 2) {
        std::fprintf(stderr, "usage: %s <out.glb>\n", argv[0]);
        return 1;
    }
    GlbFixture glb;

    // Three rings of four corners, at heights 0, 1 and 2.
    std::vector<float> positions, normals, uvs, weights, bulge;
    std::vector<uint8_t> joints;
    const float corners[4][2] = {{-0.25f, -0.25f}, {0.25f, -0.25f}, {0.25f, 0.25f}, {-0.25f, 0.25f}};
    for (int ring = 0; ring < 3; ++ring) {
        for (int c = 0; c < 4; ++c) {
            const float x = corners[c][0], z = corners[c][1];
            positions.insert(positions.end(), {x, float(ring), z});
            const float n = 1.0f / std::sqrt(2.0f);
            normals.insert(normals.end(), {x > 0 ? n : -n, 0.0f, z > 0 ? n : -n});
            uvs.insert(uvs.end(), {float(c) / 3.0f, float(ring) / 2.0f});
            const float top = float(ring) / 2.0f;  // weight of the top bone
            joints.insert(joints.end(), {0, 1, 0, 0});
            weights.insert(weights.end(), {1.0f - top, top, 0.0f, 0.0f});
            const float push = ring == 1 ? 0.25f : 0.0f;
            bulge.insert(bulge.end(), {x > 0 ? push : -push, 0.0f, z > 0 ? push : -push});
        }
    }
    std::vector<uint16_t> indices;
    for (int ring = 0; ring < 2; ++ring)
        for (int c = 0; c < 4; ++c) {
            const uint16_t a = uint16_t(ring * 4 + c), b = uint16_t(ring * 4 + (c + 1) % 4);
            const uint16_t d = uint16_t(a + 4), e = uint16_t(b + 4);
            indices.insert(indices.end(), {a, b, e, a, e, d});
        }

    const int position = glb.AddData(positions, kFloat, "VEC3");
    const int normal = glb.AddData(normals, kFloat, "VEC3");
    const int uv = glb.AddData(uvs, kFloat, "VEC2");
    const int joint = glb.AddData(joints, kUByte, "VEC4");
    const int weight = glb.AddData(weights, kFloat, "VEC4");
    const int index = glb.AddData(indices, kUShort, "SCALAR");
    const int target = glb.AddData(bulge, kFloat, "VEC3");

    // Inverse bind matrices: the root bone at the origin, the top bone one unit up.
    std::vector<float> ibm = {1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1,
                              1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, -1, 0, 1};
    const int inverseBind = glb.AddData(ibm, kFloat, "MAT4");

    const std::vector<float> times = {0.0f, 0.5f, 1.0f};
    const float s = std::sin(0.3f), c = std::cos(0.3f);
    const std::vector<float> rotations = {0, 0, 0, 1, 0, 0, s, c, 0, 0, 0, 1};
    const std::vector<float> pulse = {0.0f, 1.0f, 0.0f};
    const std::vector<float> lift = {0.0f, 1.0f, 0.0f, 0.0f, 1.25f, 0.0f, 0.0f, 1.0f, 0.0f};
    const int time = glb.AddData(times, kFloat, "SCALAR");
    const int rotation = glb.AddData(rotations, kFloat, "VEC4");
    const int weightKeys = glb.AddData(pulse, kFloat, "SCALAR");
    const int translation = glb.AddData(lift, kFloat, "VEC3");

    // An 8 x 8 checker texture.
    std::vector<uint8_t> rgba;
    for (int y = 0; y < 8; ++y)
        for (int x = 0; x < 8; ++x) {
            const uint8_t v = ((x + y) & 1) ? 230 : 40;
            rgba.insert(rgba.end(), {v, v, uint8_t(255 - v), 255});
        }
    const std::vector<uint8_t> png = MakePng(8, 8, rgba);
    const size_t pngOffset = glb.Append(png);
    const int image = glb.AddView(pngOffset, png.size());

    auto n = [](int i) { return std::to_string(i); };
    const std::string members =
        "\"scene\":0,\"scenes\":[{\"nodes\":[3]}],"
        "\"nodes\":["
        "{\"name\":\"Column\",\"mesh\":0,\"skin\":0},"
        "{\"name\":\"Bone_Root\",\"children\":[2]},"
        "{\"name\":\"Bone_Top\",\"translation\":[0,1,0]},"
        "{\"name\":\"Armature\",\"children\":[0,1]}],"
        "\"meshes\":[{\"name\":\"Column\",\"weights\":[0],\"extras\":{\"targetNames\":[\"Bulge\"]},"
        "\"primitives\":[{\"attributes\":{\"POSITION\":" + n(position) + ",\"NORMAL\":" + n(normal) +
        ",\"TEXCOORD_0\":" + n(uv) + ",\"JOINTS_0\":" + n(joint) + ",\"WEIGHTS_0\":" + n(weight) +
        "},\"indices\":" + n(index) + ",\"material\":0,\"targets\":[{\"POSITION\":" + n(target) + "}]}]}],"
        "\"skins\":[{\"name\":\"Rig\",\"inverseBindMatrices\":" + n(inverseBind) + ",\"joints\":[1,2]}],"
        "\"materials\":[{\"name\":\"Checker\",\"pbrMetallicRoughness\":{\"baseColorTexture\":{\"index\":0},"
        "\"baseColorFactor\":[1.0,0.8,0.6,1.0],\"metallicFactor\":0.0,\"roughnessFactor\":0.5}}],"
        "\"textures\":[{\"name\":\"CheckerTexture\",\"sampler\":0,\"source\":0}],"
        "\"samplers\":[{\"magFilter\":9728,\"minFilter\":9986,\"wrapS\":33071,\"wrapT\":33648}],"
        "\"images\":[{\"name\":\"checker\",\"mimeType\":\"image/png\",\"bufferView\":" + n(image) + "}],"
        "\"animations\":[{\"name\":\"Wave\",\"samplers\":["
        "{\"input\":" + n(time) + ",\"output\":" + n(rotation) + ",\"interpolation\":\"LINEAR\"},"
        "{\"input\":" + n(time) + ",\"output\":" + n(weightKeys) + ",\"interpolation\":\"STEP\"},"
        "{\"input\":" + n(time) + ",\"output\":" + n(translation) + "}],"
        "\"channels\":[{\"sampler\":0,\"target\":{\"node\":2,\"path\":\"rotation\"}},"
        "{\"sampler\":1,\"target\":{\"node\":0,\"path\":\"weights\"}},"
        "{\"sampler\":2,\"target\":{\"node\":2,\"path\":\"translation\"}}]}]";
    if (!WriteFile(argv[1], glb.Build(members))) {
        std::fprintf(stderr, "cannot write %s\n", argv[1]);
        return 1;
    }
    return 0;
}
