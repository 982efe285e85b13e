// Writes a large binary FBX document for load benchmarks: a joint hierarchy
// with baked animation curves (about half the bytes) and meshes with big
// zlib arrays (the other half).
//   vurl_make_big_fbx [--text] OUT.fbx [megabytes=100] [version=7500]
// --text writes the same kind of document as a text file of about that size.
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

#include "fbx_writer.h"

using namespace fbxwriter;

namespace {

constexpr int kKeysPerCurve = 1200;
constexpr int kVerticesPerMesh = 60000;
constexpr int64_t kTicksPerFrame = 141120000 / 30;

// Deterministic values with some noise, so zlib has real work to do.
struct Noise {
    uint32_t state = 12345;
    float Next() {
        state = state * 1664525u + 1013904223u;
        return static_cast<float>(state >> 8) / 16777216.0f;
    }
};

Record P(const char* name, const char* type, const char* label, const char* flags) {
    return PropertyRecord(name, type, label, flags);
}

Record AnimationCurve(int64_t id, Noise& noise, int channel) {
    Record curve = ObjectRecord("AnimationCurve", id, "", "AnimCurve", "");
    curve.Add("Default").Double(0);
    curve.Add("KeyVer").Int(4009);
    std::vector<int64_t> times(kKeysPerCurve);
    std::vector<float> values(kKeysPerCurve);
    for (int k = 0; k < kKeysPerCurve; ++k) {
        times[static_cast<size_t>(k)] = k * kTicksPerFrame;
        values[static_cast<size_t>(k)] =
            std::sin(static_cast<float>(k) * 0.05f + static_cast<float>(channel)) * 30.0f + noise.Next() * 0.01f;
    }
    curve.Add("KeyTime").Add(Value::LongArray(times, 1));
    curve.Add("KeyValueFloat").Add(Value::FloatArray(values, 1));
    curve.Add("KeyAttrFlags").Add(Value::IntArray({24840}, 0));
    curve.Add("KeyAttrDataFloat").Add(Value::FloatArray({0, 0, 218434821.0f, 0}, 0));
    curve.Add("KeyAttrRefCount").Add(Value::IntArray({kKeysPerCurve}, 0));
    return curve;
}

Record Mesh(int64_t id, Noise& noise) {
    Record geometry = ObjectRecord("Geometry", id, "", "Geometry", "Mesh");
    std::vector<double> vertices(3 * kVerticesPerMesh);
    for (double& v : vertices) v = std::round(noise.Next() * 1000.0) / 1000.0;
    std::vector<int32_t> indices;
    for (int t = 0; t + 2 < kVerticesPerMesh; t += 3) {
        indices.push_back(t);
        indices.push_back(t + 1);
        indices.push_back(-(t + 2) - 1);
    }
    geometry.Add("Vertices").Add(Value::DoubleArray(vertices, 1));
    geometry.Add("PolygonVertexIndex").Add(Value::IntArray(indices, 1));
    geometry.Add("GeometryVersion").Int(124);
    Record& normals = geometry.Add("LayerElementNormal").Int(0);
    normals.Add("Version").Int(102);
    normals.Add("MappingInformationType").String("ByPolygonVertex");
    normals.Add("ReferenceInformationType").String("Direct");
    std::vector<double> n(3 * indices.size());
    for (double& v : n) v = std::round(noise.Next() * 100.0) / 100.0;
    normals.Add("Normals").Add(Value::DoubleArray(n, 1));
    return geometry;
}

}  // namespace

int main(int argc, char** argv) {
    const bool text = argc > 1 && std::string(argv[1]) == "--text";
    if (text) {
        --argc;
        ++argv;
    }
    if (argc < 2) {
        std::fprintf(stderr, "usage: %s [--text] OUT.fbx [megabytes=100] [version=7500]\n", argv[0]);
        return 1;
    }
    const double megabytes = argc > 2 ? std::atof(argv[2]) : 100.0;
    const auto version = static_cast<uint32_t>(argc > 3 ? std::atoi(argv[3]) : 7500);
    // Measured per unit of this generator: a joint with 9 curves of 1200 keys
    // writes about 50 KB (text: 200 KB), a mesh of 60,000 vertices about 1.8 MB
    // (text: 2.3 MB).
    const auto joints = static_cast<int>(megabytes * 0.5 * 1e6 / (text ? 200e3 : 49600.0)) + 1;
    const auto meshes = static_cast<int>(megabytes * 0.5 * 1e6 / (text ? 2.3e6 : 1.84e6)) + 1;

    Noise noise;
    std::vector<Record> top;
    top.push_back(HeaderExtension(1004, static_cast<int32_t>(version)));
    Record& settings = top.emplace_back("GlobalSettings");
    settings.Add("Version").Int(1000);
    Record& props = settings.Add("Properties70");
    props.Child(P("UpAxis", "int", "Integer", "")).Int(1);
    props.Child(P("UnitScaleFactor", "double", "Number", "")).Double(1);
    props.Child(P("TimeMode", "enum", "", "")).Int(6);

    Record& objects = top.emplace_back("Objects");
    Record& connections = top.emplace_back("Connections");
    int64_t next = 1000;
    const int64_t stack = next++, layer = next++;
    objects.Child(ObjectRecord("AnimationStack", stack, "Take 001", "AnimStack", ""));
    objects.Child(ObjectRecord("AnimationLayer", layer, "BaseLayer", "AnimLayer", ""));
    connections.Child(ConnectionOO(layer, stack));
    int64_t parent = 0;
    for (int j = 0; j < joints; ++j) {
        const int64_t model = next++;
        Record& joint = objects.Child(ObjectRecord("Model", model, "joint" + std::to_string(j), "Model", "LimbNode"));
        joint.Add("Version").Int(232);
        Record& jointProps = joint.Add("Properties70");
        jointProps.Child(P("Lcl Translation", "Lcl Translation", "", "A")).Double(0).Double(1).Double(0);
        connections.Child(ConnectionOO(model, parent));
        parent = j % 40 == 39 ? 0 : model;
        const char* channels[] = {"Lcl Translation", "Lcl Rotation", "Lcl Scaling"};
        for (int c = 0; c < 3; ++c) {
            const int64_t curveNode = next++;
            Record& node = objects.Child(ObjectRecord("AnimationCurveNode", curveNode, "T", "AnimCurveNode", ""));
            Record& nodeProps = node.Add("Properties70");
            for (const char* axis : {"d|X", "d|Y", "d|Z"}) nodeProps.Child(P(axis, "Number", "", "A")).Double(0);
            connections.Child(ConnectionOO(curveNode, layer));
            connections.Child(ConnectionOP(curveNode, model, channels[c]));
            for (int a = 0; a < 3; ++a) {
                const int64_t curve = next++;
                objects.Child(AnimationCurve(curve, noise, c * 3 + a));
                connections.Child(ConnectionOP(curve, curveNode, a == 0 ? "d|X" : a == 1 ? "d|Y" : "d|Z"));
            }
        }
    }
    for (int m = 0; m < meshes; ++m) {
        const int64_t model = next++, geometry = next++;
        objects.Child(ObjectRecord("Model", model, "mesh" + std::to_string(m), "Model", "Mesh"));
        objects.Child(Mesh(geometry, noise));
        connections.Child(ConnectionOO(model, 0));
        connections.Child(ConnectionOO(geometry, model));
    }

    Options options;
    options.version = version;
    std::vector<uint8_t> bytes;
    if (text) {
        const std::string written = WriteAscii(top, version);
        bytes.assign(written.begin(), written.end());
    } else {
        bytes = Write(top, options);
    }
    if (!SaveFile(argv[1], bytes)) {
        std::fprintf(stderr, "cannot write %s\n", argv[1]);
        return 1;
    }
    std::printf("%s: %zu bytes, %d joints (%d curves), %d meshes\n", argv[1], bytes.size(), joints, joints * 9,
                meshes);
    return 0;
}
