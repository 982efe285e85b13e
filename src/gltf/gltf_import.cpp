#include "gltf/gltf_import.h"

#include <algorithm>
#include <cfloat>
#include <unordered_map>

#include "gltf/gltf_accessors.h"

namespace {

constexpr size_t kMaxNodeDepth = 4096;

std::string Label(const char* kind, size_t index) { return std::string(kind) + " " + std::to_string(index); }

// The glTF primitive mode: POINTS, LINES, LINE_LOOP, LINE_STRIP, TRIANGLES, TRIANGLE_STRIP,
// TRIANGLE_FAN are 0 to 6.
uint32_t PrimitiveTypeOf(int32_t mode) {
    switch (mode) {
        case 0: return kPrimitivePoints;
        case 1: return kPrimitiveLines;
        case 2:
        case 3: return kPrimitiveLineStrip;
        case 4: return kPrimitiveTriangles;
        case 5:
        case 6: return kPrimitiveTriangleStrip;
        default: return kPrimitiveTriangles;
    }
}

int32_t InterpolationOf(GltfInterpolation interpolation) {
    switch (interpolation) {
        case GltfInterpolation::LINEAR: return kInterpolationLinear;
        case GltfInterpolation::STEP: return kInterpolationConstant;
        case GltfInterpolation::CUBICSPLINE: return kInterpolationCubic;
    }
    return kInterpolationLinear;
}

// Indices must address existing vertices, or every later stage would read past them.
void CheckIndices(const std::vector<uint32_t>& indices, size_t vertexCount, const std::string& where) {
    for (uint32_t index : indices)
        if (index >= vertexCount)
            throw GltfError(where + " has index " + std::to_string(index) + " for " + std::to_string(vertexCount) +
                            " vertices");
}

// Every attribute must hold one element per vertex, or later stages would read past the
// shorter arrays.
void CheckVertexCounts(const VertexData& v, const std::string& where) {
    if (v.positions.empty()) return;
    if (v.positions.size() % 3 != 0)
        throw GltfError(where + " has " + std::to_string(v.positions.size()) + " POSITION values, not three per vertex");
    const size_t n = v.positions.size() / 3;
    auto check = [&](const char* name, size_t size, size_t comps, size_t altComps) {
        if (size != 0 && size != n * comps && size != n * altComps)
            throw GltfError(where + " has " + std::to_string(size) + " " + name + " values for " + std::to_string(n) +
                            " vertices");
    };
    check("NORMAL", v.normals.size(), 3, 3);
    check("COLOR_0", v.colors.size(), 4, 3);
    check("JOINTS_0", v.joints.size(), 4, 4);
    check("WEIGHTS_0", v.weights.size(), 4, 4);
    for (int set = 0; set < 8; ++set) check("TEXCOORD", v.texCoords[set].size(), 2, 2);
}

// Fills a vector channel from groups of N floats (3 for vectors, 4 for quaternions).
template <typename V, size_t N>
void FillGroups(const std::vector<float>& data, bool cubic, std::vector<V>& in, std::vector<V>& values,
                std::vector<V>& out) {
    auto make = [&](size_t at) {
        V v;
        for (size_t c = 0; c < N; ++c) v[int(c)] = data[at + c];
        return v;
    };
    if (!cubic) {
        const size_t keys = data.size() / N;
        values.reserve(values.size() + keys);
        for (size_t k = 0; k < keys; ++k) values.push_back(make(k * N));
        return;
    }
    const size_t keys = data.size() / (3 * N);
    in.reserve(in.size() + keys);
    values.reserve(values.size() + keys);
    out.reserve(out.size() + keys);
    for (size_t k = 0; k < keys; ++k) {
        in.push_back(make(k * 3 * N));
        values.push_back(make(k * 3 * N + N));
        out.push_back(make(k * 3 * N + 2 * N));
    }
}

}  // namespace

void GltfImporter::ImportSkins() {
    const auto& skins = context_.document.skins;
    skins_.reserve(skins.size());
    for (size_t s = 0; s < skins.size(); ++s) {
        const GltfSkin& record = skins[s];
        Skin* skin = scene_.Own(std::make_unique<Skin>());
        skins_.push_back(skin);
        if (record.inverseBindMatrices == -1) {
            // Without matrices every joint binds with the identity, as glTF defines it.
            skin->inverseBindMatrices.resize(record.joints.size());
        } else {
            const std::vector<float> floats =
                ReadAccessorAsFloat(AccessorAt(context_, record.inverseBindMatrices), context_);
            if (floats.size() > 15) {
                const size_t count = floats.size() / 16;
                skin->inverseBindMatrices.resize(count);
                for (size_t m = 0; m < count; ++m)
                    std::copy_n(floats.begin() + ptrdiff_t(m * 16), 16, skin->inverseBindMatrices[m].m);
            }
        }
        // Writers pair matrices with joints by position, so each joint needs one; surplus
        // matrices are allowed by glTF and kept.
        if (!skin->inverseBindMatrices.empty() && skin->inverseBindMatrices.size() < record.joints.size())
            throw GltfError(Label("skin", s) + " has " + std::to_string(skin->inverseBindMatrices.size()) +
                            " inverse bind matrices for " + std::to_string(record.joints.size()) + " joints");
        skin->joints.reserve(record.joints.size());
        for (int32_t joint : record.joints) skin->joints.push_back(int64_t(joint));
    }
}

void GltfImporter::ImportCameras() {
    const auto& cameras = context_.document.cameras;
    cameras_.reserve(cameras.size());
    for (size_t i = 0; i < cameras.size(); ++i) {
        const GltfCamera& record = cameras[i];
        Camera* camera = scene_.Own(std::make_unique<Camera>());
        cameras_.push_back(camera);
        camera->projection = kProjectionPerspective;
        camera->nearClip = 0.1f;
        camera->farClip = 1000.0f;
        camera->fov = 45.0f;
        camera->orthoHeight = 4.0f;
        camera->clearColor = Vec3(0.0f, 0.0f, 0.0f);
        camera->clearAlpha = 1.0f;
        camera->name = record.name;
        camera->id = i;
        if (record.type == 0 && record.perspective) {
            camera->projection = kProjectionPerspective;
            camera->nearClip = record.perspective->znear;
            camera->farClip = record.perspective->zfar;
            camera->fov = float(double(record.perspective->yfov) * 57.29577951308232);
        } else if (record.type == 1 && record.orthographic) {
            camera->projection = kProjectionOrthographic;
            camera->nearClip = record.orthographic->znear;
            camera->farClip = record.orthographic->zfar;
            camera->orthoHeight = record.orthographic->ymag * 0.5f;
        }
    }
}

void GltfImporter::ImportLights() {
    if (!context_.document.lightsPresent) return;
    const auto& lights = context_.document.lights;
    lights_.reserve(lights.size());
    for (const GltfLight& record : lights) {
        Light* light = scene_.Own(std::make_unique<Light>());
        lights_.push_back(light);
        light->type = record.type;
        if (record.color.size() == 3) light->color = Vec3(record.color[0], record.color[1], record.color[2]);
        light->range = record.range;
        light->falloffMode = 1;
        light->intensity = std::clamp(record.intensity, 0.0f, 1.0f);
        if (record.spot) {
            light->innerConeAngle = record.spot->innerConeAngle;
            light->outerConeAngle = record.spot->outerConeAngle;
        }
    }
}

GraphNode* GltfImporter::ImportNode(size_t index) {
    const GltfNode& record = context_.document.nodes[index];
    auto node = std::make_unique<GraphNode>();
    node->name = record.name.empty() ? "node_" + std::to_string(index) : record.name;
    node->id = index;

    if (record.matrix.size() != 16) {
        if (record.translation.size() == 3)
            node->position = Vec3(record.translation[0], record.translation[1], record.translation[2]);
        if (record.rotation.size() == 4)
            node->rotation = QuatToEuler(Quat(record.rotation[0], record.rotation[1], record.rotation[2], record.rotation[3]));
        if (record.scale.size() == 3) node->scale = Vec3(record.scale[0], record.scale[1], record.scale[2]);
    } else {
        Mat4 matrix;
        std::copy_n(record.matrix.begin(), 16, matrix.m);
        const MatrixParts parts = Decompose(matrix);
        node->position = parts.translation;
        node->scale = parts.scale;
        for (int c = 0; c < 3; ++c) node->rotation[c] = float(double(parts.rotation[c]) * 57.29577951308232);
    }

    if (record.mesh != -1) node->geometry = ImportMesh(record.mesh);
    if (record.camera != -1) {
        if (record.camera < 0 || size_t(record.camera) >= cameras_.size())
            throw GltfError(Label("node", index) + " refers to missing camera " + std::to_string(record.camera));
        node->camera = cameras_[size_t(record.camera)];
    }
    if (record.lightPresent && record.light >= 0 && size_t(record.light) < lights_.size())
        node->light = lights_[size_t(record.light)];
    if (record.skin != -1 && node->geometry) {
        if (record.skin < 0 || size_t(record.skin) >= skins_.size())
            throw GltfError(Label("node", index) + " refers to missing skin " + std::to_string(record.skin));
        for (MeshInstance* instance : node->geometry->meshInstances) instance->skin = skins_[size_t(record.skin)];
    }
    return node.release();
}

void GltfImporter::ImportNodes() {
    const auto& records = context_.document.nodes;
    const size_t count = records.size();
    std::vector<std::unique_ptr<GraphNode>> nodes(count);
    for (size_t i = 0; i < count; ++i) nodes[i].reset(ImportNode(i));

    // Each node may hang below one parent only, and the hierarchy must not loop: both would
    // make a node owned twice.
    std::vector<int32_t> parentOf(count, -1);
    for (size_t i = 0; i < count; ++i) {
        for (int32_t child : records[i].children) {
            if (child < 0 || size_t(child) >= count)
                throw GltfError(Label("node", i) + " has missing child " + std::to_string(child));
            if (parentOf[size_t(child)] != -1 || size_t(child) == i)
                throw GltfError(Label("node", size_t(child)) + " has more than one parent");
            parentOf[size_t(child)] = int32_t(i);
        }
    }
    std::vector<size_t> roots;
    for (size_t i = 0; i < count; ++i)
        if (parentOf[i] == -1) roots.push_back(i);
    // Later stages walk the tree recursively, so an absurdly deep chain is refused too.
    size_t reached = 0;
    std::vector<std::pair<size_t, size_t>> stack;  // node, depth
    for (size_t r : roots) stack.emplace_back(r, 1);
    while (!stack.empty()) {
        const auto [n, depth] = stack.back();
        stack.pop_back();
        ++reached;
        if (depth > kMaxNodeDepth)
            throw GltfError("the node hierarchy is more than " + std::to_string(kMaxNodeDepth) + " levels deep");
        for (int32_t child : records[n].children) stack.emplace_back(size_t(child), depth + 1);
    }
    if (reached != count) throw GltfError("the node hierarchy contains a cycle");

    std::vector<GraphNode*> raw(count);
    for (size_t i = 0; i < count; ++i) raw[i] = nodes[i].release();
    for (size_t i = 0; i < count; ++i)
        for (int32_t child : records[i].children) raw[i]->AddChild(raw[size_t(child)]);

    if (roots.size() == 1) {
        scene_.root = raw[roots[0]];
    } else if (roots.size() > 1) {
        GraphNode* root = new GraphNode();
        root->name = "SceneRoot";
        root->id = 0;
        for (size_t r : roots) root->AddChild(raw[r]);
        scene_.root = root;
    }
}

Geometry* GltfImporter::ImportMesh(int32_t index) {
    if (index < 0 || size_t(index) >= context_.document.meshes.size())
        throw GltfError("mesh " + std::to_string(index) + " does not exist");
    if (Geometry* known = scene_.geometries.Find(uint64_t(index))) return known;
    const GltfMesh& mesh = context_.document.meshes[size_t(index)];

    Geometry* geometry = new Geometry();
    geometry->name = mesh.name.empty() ? "mesh_" + std::to_string(index) : mesh.name;
    geometry->id = uint64_t(index);
    // Registered before its primitives are read, so that a refusal part way frees them.
    scene_.geometries.Add(geometry);

    for (size_t p = 0; p < mesh.primitives.size(); ++p) {
        const GltfPrimitive& primitive = mesh.primitives[p];
        const std::string where = Label("mesh", size_t(index)) + " primitive " + std::to_string(p);
        MeshInstance* instance = scene_.Own(std::make_unique<MeshInstance>());
        instance->primitiveType = kPrimitiveTriangles;
        geometry->meshInstances.push_back(instance);

        if (!DecodeDracoPrimitive(primitive, *instance) && !primitive.attributes.empty()) {
            VertexData* vertices = scene_.Own(std::make_unique<VertexData>());
            instance->vertices = vertices;
            const GltfAttributeMap& attributes = primitive.attributes;
            FillVertexData(
                *vertices, [&](const char* name) { return ReadAttribute(name, attributes, context_); },
                [&](const char* name) {
                    // The joints keep the file's own normalized flag.
                    auto found = attributes.find(name);
                    return found == attributes.end()
                               ? std::vector<uint16_t>()
                               : ReadAccessorAsJoint(AccessorAt(context_, found->second), context_);
                });
            if (primitive.indices >= 0) {
                instance->indices = scene_.Own(std::make_unique<std::vector<uint32_t>>(
                    ReadAccessorAsIndex(AccessorAt(context_, primitive.indices), context_)));
                if (!vertices->positions.empty())
                    CheckIndices(*instance->indices, vertices->positions.size() / 3, where);
            }
        }
        if (primitive.material >= 0) instance->material = ImportMaterial(primitive.material);
        instance->primitiveType = PrimitiveTypeOf(primitive.mode);
        if (instance->vertices) CheckVertexCounts(*instance->vertices, where);
        if (!primitive.targets.empty()) ImportMorphTargets(mesh, primitive, *instance, where);
    }
    return geometry;
}

void GltfImporter::ImportMorphTargets(const GltfMesh& mesh, const GltfPrimitive& primitive, MeshInstance& instance,
                                      const std::string& where) {
    const size_t meshVertices = instance.vertices ? instance.vertices->positions.size() / 3 : 0;
    instance.morph = scene_.Own(std::make_unique<Morph>());
    for (size_t t = 0; t < primitive.targets.size(); ++t) {
        const std::vector<float> positions = ReadAttribute("POSITION", primitive.targets[t], context_);
        const std::vector<float> normals = ReadAttribute("NORMAL", primitive.targets[t], context_);
        if (positions.empty()) continue;  // no target, but t still counts for the names
        const uint32_t vertexCount = uint32_t(positions.size() / 3);
        // Deltas address the mesh's vertices by index.
        if (meshVertices != 0 && vertexCount != meshVertices)
            throw GltfError(where + " morph target " + std::to_string(t) + " has " + std::to_string(vertexCount) +
                            " vertices for " + std::to_string(meshVertices));
        MorphTarget* target = scene_.Own(std::make_unique<MorphTarget>(vertexCount));
        instance.morph->targets.push_back(target);
        std::copy_n(positions.begin(), size_t(vertexCount) * 3, target->deltaPositions.begin());
        if (normals.size() == positions.size())
            std::copy_n(normals.begin(), size_t(vertexCount) * 3, target->deltaNormals.begin());
        Compact(*target, FLT_EPSILON);
        if (mesh.targetNames && t < mesh.targetNames->size()) target->name = (*mesh.targetNames)[t];
    }
}

std::unique_ptr<Animation> GltfImporter::ImportAnimation(size_t index) {
    const GltfAnimation& record = context_.document.animations[index];
    auto animation = std::make_unique<Animation>();
    animation->name = record.name;
    animation->duration = 0.0f;
    const size_t nodeCount = context_.document.nodes.size();
    // One track per glTF node in node order, of which only those that receive data are
    // kept; they are made on first use so that many animations over many nodes stay cheap.
    std::unordered_map<int32_t, size_t> trackOf;

    for (size_t c = 0; c < record.channels.size(); ++c) {
        const GltfChannel& channel = record.channels[c];
        if (channel.target.node < 0 || size_t(channel.target.node) >= nodeCount) continue;
        const std::string where = Label("animation", index) + " channel " + std::to_string(c);
        if (channel.sampler < 0 || size_t(channel.sampler) >= record.samplers.size())
            throw GltfError(where + " refers to missing sampler " + std::to_string(channel.sampler));
        const GltfAnimationSampler& sampler = record.samplers[size_t(channel.sampler)];
        auto [slot, added] = trackOf.emplace(channel.target.node, animation->tracks.size());
        if (added) {
            animation->tracks.emplace_back();
            animation->tracks.back().nodeId = uint64_t(channel.target.node);
        }
        AnimationTrack& track = animation->tracks[slot->second];
        const std::string& path = channel.target.path;
        if (path != "translation" && path != "rotation" && path != "scale" && path != "weights") continue;

        const size_t accessorCount = context_.document.accessors.size();
        if (sampler.input < 0 || size_t(sampler.input) >= accessorCount || sampler.output < 0 ||
            size_t(sampler.output) >= accessorCount)
            continue;
        const std::vector<float> times = ReadAccessorAsFloat(context_.document.accessors[size_t(sampler.input)], context_);
        const std::vector<float> output =
            ReadAccessorAsFloat(context_.document.accessors[size_t(sampler.output)], context_);
        const bool cubic = sampler.interpolation == GltfInterpolation::CUBICSPLINE;
        const int32_t interpolation = InterpolationOf(sampler.interpolation);

        // Writers walk times and values together, so both must have one entry per key.
        auto checkKeys = [&](size_t before, size_t after) {
            if (after - before != times.size())
                throw GltfError(where + " has " + std::to_string(after - before) + " keys for " +
                                std::to_string(times.size()) + " times");
        };
        if (path == "translation" || path == "scale") {
            VectorChannel& target = path == "translation" ? track.position : track.scale;
            const size_t before = target.values.size();
            FillGroups<Vec3, 3>(output, cubic, target.inTangents, target.values, target.outTangents);
            checkKeys(before, target.values.size());
            target.times.insert(target.times.end(), times.begin(), times.end());
            target.interpolation = interpolation;
        } else if (path == "rotation") {
            QuatChannel& target = track.rotationQuat;
            const size_t before = target.values.size();
            FillGroups<Quat, 4>(output, cubic, target.inTangents, target.values, target.outTangents);
            checkKeys(before, target.values.size());
            target.times.insert(target.times.end(), times.begin(), times.end());
            target.interpolation = interpolation;
        } else {
            WeightsChannel& target = track.weights;
            const size_t total = output.size();
            if (times.empty()) throw GltfError(where + " has weights but no key times");
            const size_t perKey = (total / times.size()) / (cubic ? 3 : 1);
            if (perKey == 0) throw GltfError(where + " has fewer weights than key times");
            const size_t groups = total / perKey;
            const size_t before = target.values.size();
            size_t at = 0;
            for (size_t g = 0; g < groups; ++g) {
                // Cubic groups take three runs of weights; stop where the data ends.
                const size_t take = cubic ? 3 * perKey : perKey;
                if (at + take > total) break;
                auto run = [&](size_t from) {
                    return std::vector<float>(output.begin() + ptrdiff_t(from), output.begin() + ptrdiff_t(from + perKey));
                };
                if (cubic) {
                    target.inTangents.push_back(run(at));
                    target.values.push_back(run(at + perKey));
                    target.outTangents.push_back(run(at + 2 * perKey));
                } else {
                    target.values.push_back(run(at));
                }
                at += take;
            }
            checkKeys(before, target.values.size());
            target.times.insert(target.times.end(), times.begin(), times.end());
            target.interpolation = interpolation;
        }
    }

    auto empty = [](const AnimationTrack& t) {
        return t.position.times.empty() && t.rotation.times.empty() && t.rotationQuat.times.empty() &&
               t.scale.times.empty() && t.weights.times.empty();
    };
    animation->tracks.erase(std::remove_if(animation->tracks.begin(), animation->tracks.end(), empty),
                            animation->tracks.end());
    std::stable_sort(animation->tracks.begin(), animation->tracks.end(),
                     [](const AnimationTrack& a, const AnimationTrack& b) { return a.nodeId < b.nodeId; });
    return animation;
}

Scene* ImportGltfScene(GltfContext& context, std::vector<std::unique_ptr<Animation>>* deferred) {
    auto scene = std::make_unique<Scene>();
    std::vector<std::unique_ptr<Animation>> animations;
    {
        GltfImporter importer(context, *scene);
        importer.ImportSkins();
        importer.ImportCameras();
        importer.ImportLights();
        importer.ImportNodes();
        animations.reserve(context.document.animations.size());
        for (size_t i = 0; i < context.document.animations.size(); ++i)
            animations.push_back(importer.ImportAnimation(i));
    }
    if (deferred)
        *deferred = std::move(animations);
    else
        AddImportedAnimations(*scene, animations);
    return scene.release();
}

void AddImportedAnimations(Scene& scene, std::vector<std::unique_ptr<Animation>>& animations) {
    for (auto& animation : animations) {
        Animation* raw = animation.release();
        scene.AddAnimation(raw);
        // A second take of one name is reported and not stored; nothing else holds it.
        auto it = scene.byName.find(raw->name);
        if (it == scene.byName.end() || it->second != raw) delete raw;
    }
    animations.clear();
}
