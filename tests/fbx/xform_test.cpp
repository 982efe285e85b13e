// Transforms: Euler angles and matrices, the node transform chain with pivots and limits,
// node evaluation and pivot reset, axis and unit conversion of scenes and their curves, and
// geometry clean-up.
#include <array>
#include <cmath>
#include <limits>
#include <sstream>

#include "fbx/fbx_anim.h"
#include "fbx/fbx_axis_system.h"
#include "fbx/fbx_deformer.h"
#include "fbx/fbx_geometry.h"
#include "fbx/fbx_geometry_converter.h"
#include "fbx/fbx_system_unit.h"
#include "fbx/fbx_transform.h"
#include "fbx_fixture.h"

namespace {

using namespace fbxtest;
using testsupport::TableRow;

const double kNan = std::numeric_limits<double>::quiet_NaN();
const FbxVector4 kOne(1, 1, 1);

// Up to three numbers of a table field, the rest 0.
FbxVector4 Vector(const std::string& field) {
    FbxVector4 v(0, 0, 0);
    std::stringstream in(field);
    std::string word;
    for (int k = 0; k < 3 && in >> word; ++k) v[k] = testsupport::Number(word);
    return v;
}

void ExpectVectorNear(const FbxVector4& v, double x, double y, double z, double tolerance = 1e-12) {
    EXPECT_NEAR(v[0], x, tolerance);
    EXPECT_NEAR(v[1], y, tolerance);
    EXPECT_NEAR(v[2], z, tolerance);
}

void ExpectNear(const FbxVector4& v, const std::string& field, double tolerance = 1e-12) {
    const FbxVector4 e = Vector(field);
    ExpectVectorNear(v, e[0], e[1], e[2], tolerance);
}

// The 3x3 part row by row (row i = image of axis i), each row written "x y z".
void ExpectRows(const FbxAMatrix& m, const std::array<std::string, 3>& rows, double tolerance = 1e-12) {
    for (int r = 0; r < 3; ++r) {
        const FbxVector4 e = Vector(rows[size_t(r)]);
        for (int c = 0; c < 3; ++c) EXPECT_NEAR(m.data[r][c], e[c], tolerance) << "row " << r << " column " << c;
    }
}

// The same against three fields of a table row from `first` on.
void ExpectRows(const FbxAMatrix& m, const TableRow& row, size_t first) {
    ExpectRows(m, {row[first], row[first + 1], row[first + 2]});
}

void ExpectMatrixNear(const FbxAMatrix& a, const FbxAMatrix& b, double tolerance = 1e-12) {
    for (int r = 0; r < 4; ++r)
        for (int c = 0; c < 4; ++c) EXPECT_NEAR(a.data[r][c], b.data[r][c], tolerance) << "row " << r << " column " << c;
}

// Sets properties of a node written "File Name=values; ...".
void SetProperties(FbxNode& node, const std::string& list) {
    std::stringstream in(list);
    for (std::string item; std::getline(in, item, ';');) {
        const size_t name = item.find_first_not_of(' '), eq = item.find('=');
        FbxProperty p = node.FindProperty(item.substr(name, eq - name).c_str());
        ASSERT_TRUE(p.IsValid()) << item;
        const FbxVector4 v = Vector(item.substr(eq + 1));
        if (p.GetType() == eFbxDouble3) p.Set(FbxDouble3{v[0], v[1], v[2]});
        else if (p.GetType() == eFbxBool) p.Set(v[0] != 0);
        else if (p.GetType() == eFbxDouble) p.Set(v[0]);
        else p.Set(int(v[0]));
    }
}

TEST(FbxMatrixTest, EulerToMatrixInEveryOrder) {
    for (const TableRow& row : Table("euler_matrices.txt")) {
        SCOPED_TRACE(testing::Message() << "line " << row.line << ": " << row[0]);
        ExpectRows(FbxEulerToMatrix(Vector(row[2]), row.Int(1)), row, 3);
    }
}

TEST(FbxMatrixTest, Decomposition) {
    for (const TableRow& row : Table("matrix_decompositions.txt")) {
        SCOPED_TRACE(row[0]);
        const FbxAMatrix m(Vector(row[1]), Vector(row[2]), Vector(row[3]));
        ExpectNear(m.GetT(), row[1]);
        ExpectNear(m.GetS(), row[4]);
        ExpectRows(FbxEulerToMatrix(m.GetR(), eFbxEulerXYZ), row, 5);
    }
    FbxAMatrix locked;
    locked.SetR(FbxVector4(30, 90, 40));
    ExpectVectorNear(locked.GetR(), -10, 90, 0, 1e-9);  // the lock branch: rx = atan2(-m21, m11), rz = 0
}

TEST(FbxMatrixTest, SettersProductAndInverse) {
    FbxAMatrix m(FbxVector4(1, 2, 3), FbxVector4(0, 0, 90), FbxVector4(2, 2, 2));
    m.SetR(FbxVector4(90, 0, 0));  // scale 2 and translation stay
    ExpectRows(m, {"2 0 0", "0 0 2", "0 -2 0"});
    m.SetS(FbxVector4(1, 3, 1));  // rotation Rx(90) stays
    ExpectRows(m, {"1 0 0", "0 0 3", "0 -1 0"});
    ExpectVectorNear(m.GetT(), 1, 2, 3);

    // move * turn turns (1, 0, 0) to (0, 1, 0), then moves it to (1, 1, 0); turn * move
    // moves it to (2, 0, 0), then turns it to (0, 2, 0).
    const FbxAMatrix move = FbxTranslationMatrix(FbxVector4(1, 0, 0));
    const FbxAMatrix turn = FbxEulerToMatrix(FbxVector4(0, 0, 90), eFbxEulerXYZ);
    ExpectVectorNear((move * turn).MultT(FbxVector4(1, 0, 0)), 1, 1, 0);
    ExpectVectorNear((turn * move).MultT(FbxVector4(1, 0, 0)), 0, 2, 0);

    const FbxAMatrix regular(FbxVector4(4, -5, 6), FbxVector4(10, -20, 30), FbxVector4(2, 0.5, 3));
    ExpectMatrixNear(regular * regular.Inverse(), FbxAMatrix(), 1e-12);
    // Determinants within the double epsilon of 0 invert to the identity: a uniform scale
    // of 1e-6 has 1e-18, although it could be inverted. Not a number is no zero.
    for (const FbxVector4& scale : {FbxVector4(0, 1, 1), FbxVector4(1e-6, 1e-6, 1e-6)})
        EXPECT_EQ(FbxAMatrix(FbxVector4(7, 8, 9), FbxVector4(0, 0, 0), scale).Inverse(), FbxAMatrix());
    EXPECT_NEAR(FbxScaleMatrix(FbxVector4(1e-5, 1, 1)).Inverse().data[0][0], 1e5, 1e-6);
    FbxAMatrix broken;
    broken.data[1][1] = kNan;
    EXPECT_TRUE(std::isnan(broken.Inverse().data[0][0]));
}

FbxTransformRecord MakeRecord(const FbxPivotSet& set) {
    FbxTransformRecord record;
    record.SetPivots(set);
    record.rotationLimits.active = true;
    return record;
}

TEST(FbxTransformTest, LimitsKeepValuesTheyDoNotClamp) {
    // Not a number passes the comparisons untouched.
    FbxTransformRecord record = MakeRecord({});
    record.rotationLimits.maxEnabled[2] = true;
    record.rotationLimits.max = FbxVector4(0, 0, 45);
    record.translationLimits.active = true;
    record.translationLimits.minEnabled[0] = true;
    record.translationLimits.min = FbxVector4(-1, -1, -1);
    FbxVector4 t(kNan, 0, 0), r(0, 0, kNan), s = kOne;
    FbxApplyLimits(record, t, r, s);
    EXPECT_TRUE(std::isnan(t[0]) && std::isnan(r[2]));
    // Inside limits in their own space the angles keep their exact values, even beyond 180.
    record.SetPivots({.preRotation = {0, 0, 30}, .rotationSpaceForLimitOnly = true});
    FbxVector4 wide(200, 0, 0);
    FbxApplyLimits(record, t, wide, s);
    EXPECT_EQ(wide, FbxVector4(200, 0, 0));
}

TEST(FbxTransformTest, LocalRotationEulerInvertsTheMatrix) {
    const FbxVector4 angles(10, -20, 30);
    for (int order = eFbxEulerXYZ; order <= eFbxEulerZYX; ++order) {
        SCOPED_TRACE(order);
        const FbxTransformRecord record =
            MakeRecord({.preRotation = {5, 0, 0}, .postRotation = {0, 0, -15}, .rotationOrder = order});
        const FbxAMatrix m = FbxLocalRotationMatrix(record, angles);
        ExpectVectorNear(FbxLocalRotationEuler(record, m), angles[0], angles[1], angles[2], 1e-9);
    }
}

TEST(FbxTransformTest, PivotSetComparison) {
    FbxPivotSet a, b, c;
    b.rotationPivot = FbxVector4(0, 1e-7, 0);      // within 1e-6
    b.geometricTranslation = FbxVector4(5, 5, 5);  // not compared
    EXPECT_TRUE(FbxPivotSetsAgree(a, b));
    c.preRotation = FbxVector4(0, 0, 2e-6);
    EXPECT_FALSE(FbxPivotSetsAgree(a, c));
    c = FbxPivotSet();
    c.scalingOffset = FbxVector4(kNan, 0, 0);
    EXPECT_FALSE(FbxPivotSetsAgree(a, c));
}

TEST(FbxAxisSystemTest, EnumsGiveTheSixWords) {
    using A = FbxAxisSystem;
    const std::pair<A, std::array<int, 6>> cases[] = {
        // up axis, up sign, front axis, front sign, coord axis, coord sign.
        // Of x and z, odd parity takes z; side x: x cross y = z, right handed.
        {A(A::eYAxis, A::eParityOdd, A::eRightHanded), {1, 1, 2, 1, 0, 1}},
        {A(A::eYAxis, A::eParityOdd, A::eLeftHanded), {1, 1, 2, 1, 0, -1}},
        // Of x and y, odd takes y, pointing back; side x: x cross z = -y, which is front.
        {A(A::eZAxis, static_cast<A::EFrontVector>(-A::eParityOdd), A::eRightHanded), {2, 1, 1, -1, 0, 1}},
        // Of y and z, even takes y; side z: z cross x = y.
        {A(A::eXAxis, A::eParityEven, A::eRightHanded), {0, 1, 1, 1, 2, 1}},
        {A(static_cast<A::EUpVector>(-A::eYAxis), A::eParityOdd, A::eRightHanded), {1, -1, 2, 1, 0, -1}},
        {A(static_cast<A::EUpVector>(7), A::eParityOdd, A::eRightHanded), {1, 1, 2, 1, 0, 1}},  // bad up
        {A(), {1, 1, 2, 1, 0, 1}},
    };
    for (const auto& [system, words] : cases) {
        const std::array<int, 6> got = {system.UpAxis(),    system.UpSign(),    system.FrontAxis(),
                                        system.FrontSign(), system.CoordAxis(), system.CoordSign()};
        EXPECT_EQ(got, words) << &system - &cases[0].first;
    }
}

TEST(FbxAxisSystemTest, ComparisonsOfAxesAndUnits) {
    // Axis systems have no tolerance: a change of any of the six words counts.
    for (int word = 0; word < 6; ++word) {
        int w[6] = {1, 1, 2, 1, 0, 1};
        w[word] += 1;
        EXPECT_NE(FbxAxisSystem(), FbxAxisSystem(w[0], w[1], w[2], w[3], w[4], w[5])) << "word " << word;
    }
    // Units compare within 1e-6, factor and multiplier alike.
    EXPECT_TRUE(FbxSystemUnit(100.0000001, 1) == FbxSystemUnit::m);
    EXPECT_FALSE(FbxSystemUnit(100.00001, 1) == FbxSystemUnit::m);
    EXPECT_FALSE(FbxSystemUnit(100, 1.00001) == FbxSystemUnit::m);
    EXPECT_FALSE(FbxSystemUnit(kNan) == FbxSystemUnit::m);
}

struct NodeEvalTest : SceneTest {
    FbxNode* Child(FbxNode* parent, const char* name, FbxDouble3 t = {0, 0, 0}) {
        FbxNode* node = FbxNode::Create(scene, name);
        parent->AddChild(node);
        node->LclTranslation.Set(t);
        return node;
    }
};

TEST_F(NodeEvalTest, PropertiesOfARootChild) {
    for (const TableRow& row : Table("node_transforms.txt")) {
        SCOPED_TRACE(testing::Message() << "line " << row.line << ": " << row[0]);
        FbxNode* node = Child(scene->GetRootNode(), row[0].c_str());
        SetProperties(*node, row[1]);
        const FbxAMatrix& global = node->EvaluateGlobalTransform();
        ExpectNear(global.GetT(), row[2]);
        ExpectRows(global, row, 3);
        // A root child's local matrix is its composed matrix; the root stays identity.
        ExpectMatrixNear(node->EvaluateLocalTransform(), global);
    }
    EXPECT_EQ(scene->GetRootNode()->EvaluateGlobalTransform(), FbxAMatrix());
}

TEST_F(NodeEvalTest, ParentsAndInheritTypes) {
    FbxNode* parent = Child(scene->GetRootNode(), "parent", {0, 0, 3});
    parent->LclScaling.Set(FbxDouble3{2, 1, 1});
    // Child T (1, 0, 0), Rz(90) below a parent of scale (2, 1, 1) at (0, 0, 3).
    const std::array<std::string, 3> cases[] = {
        {"0 2 0", "-1 0 0", "0 0 1"},  // 0: Rz(90) diag(2, 1, 1)
        {"0 1 0", "-2 0 0", "0 0 1"},  // 1: diag(2, 1, 1) Rz(90)
        {"0 1 0", "-1 0 0", "0 0 1"},  // 2: the parent's scaling left out
    };
    for (int inherit = 0; inherit < 3; ++inherit) {
        SCOPED_TRACE(inherit);
        FbxNode* child = Child(parent, "child", {1, 0, 0});
        child->InheritType.Set(inherit);
        child->LclRotation.Set(FbxDouble3{0, 0, 90});
        const FbxAMatrix& global = child->EvaluateGlobalTransform();
        ExpectRows(global, cases[inherit]);
        ExpectVectorNear(global.GetT(), 2, 0, 3);  // the parent maps (1, 0, 0) to (2, 0, 3)
        // Local = P^-1 G: the parent's inverse takes the translation back to (1, 0, 0).
        ExpectVectorNear(child->EvaluateLocalTransform().GetT(), 1, 0, 0);
    }
    // Every point of a child of a parent scaled to 0 collapses onto the parent's origin;
    // the singular P leaves P^-1 as the identity, so the local matrix is the global one.
    FbxNode* zero = Child(scene->GetRootNode(), "zero", {4, 5, 6});
    zero->LclScaling.Set(FbxDouble3{0, 0, 0});
    FbxNode* flat = Child(zero, "flat", {1, 2, 3});
    const FbxAMatrix global = flat->EvaluateGlobalTransform();
    ExpectVectorNear(global.GetT(), 4, 5, 6);
    ExpectRows(global, {"0 0 0", "0 0 0", "0 0 0"});
    EXPECT_EQ(flat->EvaluateLocalTransform(), global);
}

TEST_F(NodeEvalTest, CacheLivesUntilResetOrForce) {
    FbxNode* node = Child(scene->GetRootNode(), "node", {1, 0, 0});
    EXPECT_EQ(node->EvaluateGlobalTransform().GetT()[0], 1.0);
    node->LclTranslation.Set(FbxDouble3{2, 0, 0});
    EXPECT_EQ(node->EvaluateGlobalTransform().GetT()[0], 1.0);  // a property change keeps the cache
    EXPECT_EQ(node->EvaluateGlobalTransform(FbxTime::Infinite(), FbxNode::eSourcePivot, false, true).GetT()[0], 2.0);
    node->LclTranslation.Set(FbxDouble3{3, 0, 0});
    scene->GetTransformEvaluator().Reset();
    EXPECT_EQ(node->EvaluateGlobalTransform().GetT()[0], 3.0);
    node->LclTranslation.Set(FbxDouble3{4, 0, 0});
    EXPECT_EQ(node->EvaluateGlobalTransform(FbxTime(0)).GetT()[0], 4.0);  // another time clears it
}

TEST_F(NodeEvalTest, HostileTreesAndValues) {
    // A parent cycle: each node is the other's parent. The walk cuts the cycle.
    FbxNode* a = Child(scene->GetRootNode(), "a", {1, 0, 0});
    FbxNode* b = Child(a, "b", {0, 1, 0});
    b->AddChild(a);
    ExpectVectorNear(a->EvaluateGlobalTransform().GetT(), 1, 1, 0);
    FbxNode* self = FbxNode::Create(scene, "self");
    self->ConnectSrcObject(self);
    ExpectVectorNear(self->EvaluateGlobalTransform().GetT(), 0, 0, 0);

    // A chain far deeper than any call stack would take.
    FbxNode* leaf = scene->GetRootNode();
    for (int i = 0; i < 10000; ++i) leaf = Child(leaf, "deep", {0, 0, 1});
    EXPECT_EQ(leaf->EvaluateGlobalTransform().GetT()[2], 10000.0);

    // Not-a-number values stay in the numbers, never in the control flow.
    FbxNode* broken = Child(scene->GetRootNode(), "nan");
    SetProperties(*broken, "Lcl Rotation=nan 0 0; RotationOrder=77; InheritType=-3");
    FbxNode* below = Child(broken, "below");
    below->LclScaling.Set(FbxDouble3{kNan, 1, 1});
    EXPECT_TRUE(std::isnan(below->EvaluateGlobalTransform().data[1][1]));
    EXPECT_TRUE(std::isnan(below->EvaluateLocalTransform().data[0][0]));
}

TEST_F(NodeEvalTest, PivotSetsFollowTheProperties) {
    FbxNode* node = Child(scene->GetRootNode(), "node");
    node->RotationPivot.Set(FbxDouble3{0, 1, 0});
    EXPECT_EQ(node->GetRotationPivot(FbxNode::eSourcePivot), FbxVector4(0, 1, 0));  // read on first use
    node->RotationPivot.Set(FbxDouble3{0, 2, 0});
    EXPECT_EQ(node->GetRotationPivot(FbxNode::eSourcePivot), FbxVector4(0, 1, 0));  // until asked again
    node->UpdatePivotsFromProperties();
    EXPECT_EQ(node->GetRotationPivot(FbxNode::eSourcePivot), FbxVector4(0, 2, 0));
    EXPECT_TRUE(node->GetRotationPivot(FbxNode::eDestinationPivot).IsZero3());

    // The quick test: with every vector set, GeometricScaling not one and orders 0, the
    // pivot set keeps what it had.
    SetProperties(*node, "RotationOffset=3 3 3; RotationPivot=3 3 3; ScalingOffset=3 3 3; ScalingPivot=3 3 3; "
                         "PreRotation=3 3 3; PostRotation=3 3 3; GeometricTranslation=3 3 3; "
                         "GeometricRotation=3 3 3; GeometricScaling=3 3 3");
    node->UpdatePivotsFromProperties();
    EXPECT_EQ(node->GetRotationPivot(FbxNode::eSourcePivot), FbxVector4(0, 2, 0));
    node->RotationOrder.Set(1);  // any order but 0 lets the copy happen
    node->UpdatePivotsFromProperties();
    EXPECT_EQ(node->GetRotationPivot(FbxNode::eSourcePivot), FbxVector4(3, 3, 3));
}

TEST_F(NodeEvalTest, PivotResetKeepsTheStaticPose) {
    for (const TableRow& row : Table("pivot_resets.txt")) {
        SCOPED_TRACE(row[0]);
        FbxNode* node = Child(scene->GetRootNode(), row[0].c_str());
        SetProperties(*node, row[1]);
        scene->GetRootNode()->ResetPivotSetAndConvertAnimation(30.0, false, true, false);
        ExpectNear(FbxVector4(node->LclTranslation.Get()), row[2]);
        ExpectNear(FbxVector4(node->LclRotation.Get()), row[3], 1e-9);
        ExpectNear(FbxVector4(node->PreRotation.Get()), row[4], 0);
        EXPECT_TRUE(FbxVector4(node->RotationPivot.Get()).IsZero3());
        EXPECT_TRUE(node->GetRotationPivot(FbxNode::eSourcePivot).IsZero3());
        EXPECT_EQ(node->RotationOrder.Get(), 0);
        const FbxAMatrix& g = node->EvaluateGlobalTransform();
        ExpectRows(g, row, 5);
        ExpectNear(g.GetT(), row[2]);
        scene->GetRootNode()->RemoveChild(node);
    }
}

using GeometryConverterTest = SceneTest;

TEST_F(GeometryConverterTest, RemoveThenTriangulate) {
    // A triangle (control points 0 1 2), a two-corner polygon (3 4) and a quad (5 6 7 8):
    // polygon vertices 0 to 8, one edge per side named by its first polygon vertex. Each
    // layer element names its items so that their new order can be read off: materials 10
    // 11 12 per polygon, normals (pv, 0, 0) per polygon vertex, UV indices pv, edge
    // smoothing 100 + edge.
    FbxMesh* mesh = FbxMesh::Create(scene, "mesh");
    mesh->polygonVertexIndex = {0, 1, ~2, 3, ~4, 5, 6, 7, ~8};
    mesh->edges = {0, 1, 2, 3, 5, 6, 7, 8};
    auto element = [mesh](FbxMappingMode mapping, FbxReferenceMode reference) -> FbxLayerElement& {
        FbxLayerElement& e = mesh->layerElements.emplace_back();
        e.mapping = mapping, e.reference = reference;
        return e;
    };
    element(FbxMappingMode::ByPolygon, FbxReferenceMode::IndexToDirect).indices = {10, 11, 12};
    std::vector<double>& normals = element(FbxMappingMode::ByPolygonVertex, FbxReferenceMode::Direct).directDoubles;
    for (int pv = 0; pv < 9; ++pv) normals.insert(normals.end(), {double(pv), 0.0, 0.0});
    FbxLayerElement& uv = element(FbxMappingMode::ByPolygonVertex, FbxReferenceMode::IndexToDirect);
    uv.indices = {0, 1, 2, 3, 4, 5, 6, 7, 8};
    uv.directDoubles = {0.5, 0.5};  // the value pool never moves
    element(FbxMappingMode::ByEdge, FbxReferenceMode::Direct).directInts = {100, 101, 102, 103, 104, 105, 106, 107};
    // Five values for nine polygon vertices follow no mapping and are left alone.
    element(FbxMappingMode::ByPolygonVertex, FbxReferenceMode::Direct).directDoubles = {1, 2, 3, 4, 5};
    auto normalX = [mesh] {
        std::vector<double> x;
        const std::vector<double>& n = mesh->layerElements[1].directDoubles;
        for (size_t i = 0; i < n.size(); i += 3) x.push_back(n[i]);
        return x;
    };
    FbxGeometryConverter converter(manager);
    std::vector<int> changed{42};
    EXPECT_EQ(converter.RemoveBadPolygonsFromMeshes(scene, &changed), 1);
    EXPECT_EQ(changed, std::vector<int>{0});
    // The two-corner polygon (vertices 3, 4) goes: the quad's vertices 5 to 8 become 3 to 6.
    EXPECT_EQ(mesh->polygonVertexIndex, (std::vector<int32_t>{0, 1, ~2, 5, 6, 7, ~8}));
    EXPECT_EQ(mesh->layerElements[0].indices, (std::vector<int32_t>{10, 12}));
    EXPECT_EQ(normalX(), (std::vector<double>{0, 1, 2, 5, 6, 7, 8}));
    EXPECT_EQ(mesh->layerElements[2].indices, (std::vector<int32_t>{0, 1, 2, 5, 6, 7, 8}));
    EXPECT_EQ(mesh->layerElements[2].directDoubles, (std::vector<double>{0.5, 0.5}));
    // Edge 3 lay on the removed polygon; the others follow their vertices.
    EXPECT_EQ(mesh->edges, (std::vector<int32_t>{0, 1, 2, 3, 4, 5, 6}));
    EXPECT_EQ(mesh->layerElements[3].directInts, (std::vector<int32_t>{100, 101, 102, 104, 105, 106, 107}));
    EXPECT_EQ(mesh->layerElements[4].directDoubles, (std::vector<double>{1, 2, 3, 4, 5}));

    EXPECT_TRUE(converter.Triangulate(scene, true, false));
    // The quad (control points 5 6 7 8, vertices 3 to 6) fans into 5 6 7 and 5 7 8.
    EXPECT_EQ(mesh->polygonVertexIndex, (std::vector<int32_t>{0, 1, ~2, 5, 6, ~7, 5, 7, ~8}));
    EXPECT_EQ(mesh->layerElements[0].indices, (std::vector<int32_t>{10, 12, 12}));
    EXPECT_EQ(normalX(), (std::vector<double>{0, 1, 2, 5, 6, 7, 5, 7, 8}));
    // Sides in order of the new polygons: 0-1, 1-2, 2-0, 5-6, 6-7, the new diagonal 7-5,
    // (5-7 again), 7-8, 8-5. The diagonal has no smoothing of its own.
    EXPECT_EQ(mesh->edges, (std::vector<int32_t>{0, 1, 2, 3, 4, 5, 7, 8}));
    EXPECT_EQ(mesh->layerElements[3].directInts, (std::vector<int32_t>{100, 101, 102, 104, 105, 0, 106, 107}));
    EXPECT_EQ(converter.RemoveBadPolygonsFromMeshes(scene, &changed), 0);
    EXPECT_TRUE(changed.empty());
}

TEST_F(GeometryConverterTest, PolygonShapes) {
    // "~n" ends a polygon at point n, stored as -n - 1.
    auto list = [](const std::string& field) {
        std::vector<int32_t> out;
        std::stringstream in(field);
        for (std::string w; in >> w;) out.push_back(w[0] == '~' ? ~std::stoi(w.substr(1)) : std::stoi(w));
        return out;
    };
    for (const TableRow& row : Table("polygon_shapes.txt")) {
        SCOPED_TRACE(row[0]);
        FbxMesh* mesh = FbxMesh::Create(scene, row[0].c_str());
        mesh->polygonVertexIndex = list(row[1]);
        EXPECT_TRUE(FbxRemoveBadPolygons(*mesh));
        EXPECT_EQ(mesh->polygonVertexIndex, list(row[2]));
        mesh->polygonVertexIndex = list(row[1]);
        EXPECT_TRUE(FbxTriangulateMesh(*mesh));
        EXPECT_EQ(mesh->polygonVertexIndex, list(row[3]));
    }
}

const FbxAxisSystem kYUp(FbxAxisSystem::eYAxis, FbxAxisSystem::eParityOdd, FbxAxisSystem::eRightHanded);

// The six axis words of the scene's settings: up axis and sign, front axis and sign, coord
// axis and sign.
void SetAxes(FbxScene* scene, const std::string& words) {
    std::stringstream in(words);
    for (const char* name : {"UpAxis", "UpAxisSign", "FrontAxis", "FrontAxisSign", "CoordAxis", "CoordAxisSign"}) {
        int w = 0;
        in >> w;
        scene->GetGlobalSettings().FindProperty(name).Set(w);
    }
}

using SceneConvertTest = NodeEvalTest;

TEST_F(SceneConvertTest, ZUpCentimetresBecomeYUpMetres) {
    // Z up, front -y, side x, centimetres. A point (x, y, z) of the file is (x, z, -y)
    // in Y up, so C = Rx(-90), and a metre is 100 of its units.
    SetAxes(scene, "2 1 1 -1 0 1");
    scene->GetGlobalSettings().UnitScaleFactor.Set(1.0);
    scene->GetGlobalSettings().OriginalUnitScaleFactor.Set(2.54);
    FbxNode* hips = Child(scene->GetRootNode(), "hips", {1, 2, 3});
    FbxNode* spine = Child(hips, "spine", {0, 0, 10});
    // Pivot (1, 0, 0) turning by Rz(90): the pivot term is Rp + Rz(90) (-Rp) = (1, -1, 0).
    FbxNode* arm = Child(scene->GetRootNode(), "arm");
    SetProperties(*arm, "RotationPivot=1 0 0; Lcl Rotation=0 0 90");
    FbxNode* cameraNode = Child(scene->GetRootNode(), "camera");
    FbxCamera* camera = FbxCamera::Create(scene, "camera");
    cameraNode->SetNodeAttribute(camera);
    camera->NearPlane.Set(10.0);
    camera->FarPlane.Set(4000.0);
    FbxPose* pose = FbxPose::Create(scene, "bind");
    FbxPose::Entry entry;
    entry.node = spine;
    entry.matrix[12] = 100.0;  // global, translation (100, 0, 0)
    pose->entries.push_back(entry);
    auto t = [](FbxNode* n) { return FbxVector4(n->LclTranslation.Get()); };

    kYUp.ConvertScene(scene);
    ExpectVectorNear(t(hips), 1, 3, -2);
    ExpectVectorNear(FbxVector4(hips->LclRotation.Get()), -90, 0, 0);
    ExpectVectorNear(t(spine), 0, 0, 10);  // deeper nodes keep their values
    // Rx(-90) Rz(90) has rows (0, 0, -1), (-1, 0, 0), (0, 1, 0): in gimbal lock GetR gives
    // rx = atan2(-m21, m11) = atan2(-1, 0) = -90, ry = atan2(-m02, 0) = 90, rz = 0. The new
    // pivot term is Rp - row 0 = (1, 0, 1), and C (1, -1, 0) = (1, 0, 1) too: the
    // translation stays 0.
    ExpectVectorNear(FbxVector4(arm->LclRotation.Get()), -90, 90, 0, 1e-9);
    ExpectVectorNear(t(arm), 0, 0, 0);
    EXPECT_EQ(scene->GetGlobalSettings().GetAxisSystem(), kYUp);
    EXPECT_EQ(pose->entries[0].matrix[12], 100.0);  // poses are not turned

    FbxSystemUnit::m.ConvertScene(scene);
    ExpectVectorNear(t(hips), 0.01, 0.03, -0.02);
    ExpectVectorNear(FbxVector4(hips->LclScaling.Get()), 0.01, 0.01, 0.01);
    ExpectVectorNear(t(spine), 0, 0, 10);
    ExpectVectorNear(FbxVector4(spine->LclScaling.Get()), 1, 1, 1);
    ExpectVectorNear(FbxVector4(arm->RotationPivot.Get()), 0.01, 0, 0);
    EXPECT_NEAR(camera->NearPlane.Get(), 0.1, 1e-12);
    EXPECT_NEAR(camera->FarPlane.Get(), 40.0, 1e-12);
    EXPECT_NEAR(pose->entries[0].matrix[12], 1.0, 1e-12);
    EXPECT_EQ(scene->GetGlobalSettings().UnitScaleFactor.Get(), 100.0);
    EXPECT_EQ(scene->GetGlobalSettings().OriginalUnitScaleFactor.Get(), 2.54);

    // The spine stood at (1, 2, 3) + (0, 0, 10) cm with Z up: (1, 13, -2) cm with Y up.
    ExpectVectorNear(spine->EvaluateGlobalTransform().GetT(), 0.01, 0.13, -0.02, 1e-12);
    // The arm's pivot term (1, -1, 0) cm turned: (1, 0, 1) cm.
    ExpectVectorNear(arm->EvaluateGlobalTransform().GetT(), 0.01, 0, 0.01, 1e-12);
}

TEST_F(SceneConvertTest, AxisSystemsAsRead) {
    for (const TableRow& row : Table("axis_conversions.txt")) {
        SCOPED_TRACE(row[0]);
        SetAxes(scene, row[1]);
        FbxNode* node = Child(scene->GetRootNode(), row[0].c_str(), {1, 2, 3});
        kYUp.ConvertScene(scene);
        const FbxAMatrix& g = node->EvaluateGlobalTransform();
        ExpectNear(g.GetT(), row[2]);
        ExpectRows(g, row, 3);
        EXPECT_EQ(scene->GetGlobalSettings().GetAxisSystem(), kYUp);
        scene->GetRootNode()->RemoveChild(node);
    }
    SetAxes(scene, "7 -5 1 1 2 0");
    EXPECT_EQ(scene->GetGlobalSettings().GetAxisSystem(), FbxAxisSystem(0, -1, 1, 1, 2, 1));
    kYUp.ConvertScene(nullptr);  // nothing to do, no crash
}

TEST_F(SceneConvertTest, UnitFactors) {
    for (const TableRow& row : Table("unit_conversions.txt")) {
        SCOPED_TRACE(row[0]);
        scene->GetGlobalSettings().UnitScaleFactor.Set(testsupport::Number(row[1]));
        FbxNode* node = Child(scene->GetRootNode(), row[0].c_str(), {100, 0, 0});
        FbxNode* below = Child(node, "below", {100, 0, 0});
        FbxSystemUnit::m.ConvertScene(scene);
        EXPECT_DOUBLE_EQ(node->LclTranslation.Get()[0], testsupport::Number(row[2]));
        EXPECT_DOUBLE_EQ(node->LclScaling.Get()[1], testsupport::Number(row[3]));
        EXPECT_EQ(below->LclTranslation.Get()[0], 100.0);
        const double after = scene->GetGlobalSettings().UnitScaleFactor.Get(), expected = testsupport::Number(row[4]);
        EXPECT_TRUE(after == expected || (std::isnan(after) && std::isnan(expected))) << after;
        scene->GetRootNode()->RemoveChild(node);
    }
    FbxSystemUnit::m.ConvertScene(nullptr);
}

constexpr FbxLongLong kSecond = FbxTime::kTicksPerSecond;
constexpr FbxLongLong kFrame = 4704000;  // SetSecondDouble(1 / 30)

struct Key {
    FbxLongLong time;
    float value;
};

struct CurveConvertTest : NodeEvalTest {
    FbxAnimStack* stack = FbxAnimStack::Create(scene, "Take 001");
    FbxAnimLayer* layer = FbxAnimLayer::Create(scene, "Base Layer");
    CurveConvertTest() { stack->ConnectSrcObject(layer); }
    FbxAnimCurve* Curve(FbxProperty property, const char* channel, const std::vector<Key>& keys,
                        int interpolation = kFbxInterpolationLinear) {
        FbxAnimCurve* curve = property.GetCurve(layer, property.GetName(), channel, true);
        for (const Key& k : keys) {
            const int i = curve->KeyAdd(FbxTime(k.time));
            curve->KeySetValue(i, k.value);
            curve->KeySetInterpolation(i, interpolation);
            curve->KeySetTangentMode(i, kFbxTangentUser);
        }
        return curve;
    }
    FbxAnimCurve* Find(FbxProperty property, const char* channel) {
        return property.GetCurve(layer, property.GetName(), channel, false);
    }
    static void ExpectKeys(const FbxAnimCurve* curve, const std::vector<Key>& expected, float tolerance = 1e-6f) {
        ASSERT_NE(curve, nullptr);
        ASSERT_EQ(size_t(curve->KeyGetCount()), expected.size());
        for (int i = 0; i < curve->KeyGetCount(); ++i) {
            EXPECT_EQ(curve->KeyGetTime(i).Get(), expected[size_t(i)].time) << "key " << i;
            EXPECT_NEAR(curve->KeyGetValue(i), expected[size_t(i)].value, tolerance) << "key " << i;
        }
    }
};

TEST_F(CurveConvertTest, MatrixFilterResamplesAPivotedTurn) {
    // Rotation pivot (1, 0, 0), z turning linearly from 0 to 90 over a second. Each frame
    // k of 30 turns by 3k degrees, and the pivot term Rp + Rz(a) (-Rp) becomes the
    // translation: (1 - cos a, -sin a, 0).
    FbxNode* node = Child(scene->GetRootNode(), "arm");
    node->RotationPivot.Set(FbxDouble3{1, 0, 0});
    Curve(node->LclRotation, "Z", {{0, 0.0f}, {kSecond, 90.0f}});
    scene->GetRootNode()->ResetPivotSetAndConvertAnimation(30.0, false, true, false);

    std::vector<Key> tx, ty, rz, zero, one;
    for (int k = 0; k <= 30; ++k) {
        const double a = 3.0 * k * kFbxDegreesToRadians;
        const FbxLongLong t = k == 30 ? kSecond : k * kFrame;
        tx.push_back({t, float(1.0 - std::cos(a))});
        ty.push_back({t, float(-std::sin(a))});
        rz.push_back({t, float(3.0 * k)});
        zero.push_back({t, 0.0f});
        one.push_back({t, 1.0f});
    }
    ExpectKeys(Find(node->LclTranslation, "X"), tx);
    ExpectKeys(Find(node->LclTranslation, "Y"), ty);
    ExpectKeys(Find(node->LclTranslation, "Z"), zero);
    ExpectKeys(Find(node->LclRotation, "X"), zero);
    ExpectKeys(Find(node->LclRotation, "Z"), rz, 1e-4f);
    ExpectKeys(Find(node->LclScaling, "Y"), one);
    EXPECT_EQ(Find(node->LclRotation, "Z")->KeyGetInterpolation(7), kFbxInterpolationLinear);
    EXPECT_TRUE(FbxVector4(node->RotationPivot.Get()).IsZero3());
}

TEST_F(CurveConvertTest, MatrixFilterLeavesEqualTransformsAlone) {
    // No pivots: the sets agree, nothing is touched or made.
    FbxNode* plain = Child(scene->GetRootNode(), "plain");
    Curve(plain->LclRotation, "Z", {{0, 10.0f}, {kSecond / 2, 20.0f}}, kFbxInterpolationCubic);
    // A pre-rotation that RotationActive false ignores: the sets differ, but source and
    // target give the same transform, so the keys stay; the missing channels get their
    // single key at the first key time.
    FbxNode* ignored = Child(scene->GetRootNode(), "ignored");
    ignored->PreRotation.Set(FbxDouble3{0, 45, 0});
    ignored->LclTranslation.Set(FbxDouble3{7, 8, 9});
    Curve(ignored->LclRotation, "X", {{kFrame, 5.0f}, {3 * kFrame, 6.0f}}, kFbxInterpolationCubic);
    scene->GetRootNode()->ResetPivotSetAndConvertAnimation(30.0, false, true, false);

    ExpectKeys(Find(plain->LclRotation, "Z"), {{0, 10.0f}, {kSecond / 2, 20.0f}}, 0.0f);
    EXPECT_EQ(Find(plain->LclRotation, "Z")->KeyGetInterpolation(0), kFbxInterpolationCubic);
    EXPECT_EQ(Find(plain->LclTranslation, "X"), nullptr);
    ExpectKeys(Find(ignored->LclRotation, "X"), {{kFrame, 5.0f}, {3 * kFrame, 6.0f}}, 0.0f);
    EXPECT_EQ(Find(ignored->LclRotation, "X")->KeyGetInterpolation(0), kFbxInterpolationCubic);
    ExpectKeys(Find(ignored->LclTranslation, "Y"), {{kFrame, 8.0f}}, 0.0f);
    ExpectKeys(Find(ignored->LclScaling, "Z"), {{kFrame, 1.0f}}, 0.0f);
}

TEST_F(CurveConvertTest, AxisConversionMovesTranslationChannelsAndTurnsRotationKeys) {
    // Z up, front -y: (x, y, z) -> (x, z, -y), C = Rx(-90).
    SetAxes(scene, "2 1 1 -1 0 1");
    FbxNode* hips = Child(scene->GetRootNode(), "hips");
    Curve(hips->LclTranslation, "X", {{0, 1.0f}, {kSecond, 2.0f}});
    Curve(hips->LclTranslation, "Y", {{0, 5.0f}});
    Curve(hips->LclTranslation, "Z", {{0, 0.0f}}, kFbxInterpolationCubic);
    hips->LclTranslation.Set(FbxDouble3{1, 5, 0});
    Curve(hips->LclRotation, "Z", {{0, 0.0f}, {kSecond, 90.0f}});
    FbxNode* spine = Child(hips, "spine");
    Curve(spine->LclTranslation, "Y", {{0, 3.0f}});

    kYUp.ConvertScene(scene);
    ExpectKeys(Find(hips->LclTranslation, "X"), {{0, 1.0f}, {kSecond, 2.0f}}, 0.0f);
    ExpectKeys(Find(hips->LclTranslation, "Y"), {{0, 0.0f}}, 0.0f);  // old Z
    ExpectKeys(Find(hips->LclTranslation, "Z"), {{0, -5.0f}}, 0.0f);  // minus old Y
    EXPECT_EQ(Find(hips->LclTranslation, "Y")->KeyGetInterpolation(0), kFbxInterpolationCubic);
    // At 0: C itself, Rx(-90). At 1 s: C Rz(90), whose rows (0, 0, -1), (-1, 0, 0),
    // (0, 1, 0) decompose in gimbal lock to (-90, 90, 0).
    ExpectKeys(Find(hips->LclRotation, "X"), {{0, -90.0f}, {kSecond, -90.0f}}, 1e-4f);
    ExpectKeys(Find(hips->LclRotation, "Y"), {{0, 0.0f}, {kSecond, 90.0f}}, 1e-4f);
    ExpectKeys(Find(hips->LclRotation, "Z"), {{0, 0.0f}, {kSecond, 0.0f}}, 1e-4f);
    // The curve nodes' values follow the properties: T (1, 0, -5), R (-90, 0, 0).
    FbxAnimCurveNode* t = hips->LclTranslation.GetCurveNode(layer, false);
    EXPECT_DOUBLE_EQ(t->GetChannelValue("Z", 0.0), -5.0);
    EXPECT_NEAR(hips->LclRotation.GetCurveNode(layer, false)->GetChannelValue("X", 0.0), -90.0, 1e-9);
    ExpectKeys(Find(spine->LclTranslation, "Y"), {{0, 3.0f}}, 0.0f);  // below the root's children
}

TEST_F(CurveConvertTest, UnitConversionScalesTopTranslationAndScalingCurves) {
    scene->GetGlobalSettings().UnitScaleFactor.Set(1.0);
    FbxNode* hips = Child(scene->GetRootNode(), "hips");
    FbxAnimCurve* x = Curve(hips->LclTranslation, "X", {{0, 100.0f}, {kSecond, 300.0f}}, kFbxInterpolationCubic);
    x->KeySetRightDerivative(0, 50.0f);
    x->KeySetTangentMode(0, kFbxTangentUser);
    Curve(hips->LclScaling, "Y", {{0, 2.0f}});
    FbxNode* spine = Child(hips, "spine");
    Curve(spine->LclTranslation, "X", {{0, 100.0f}});

    FbxSystemUnit::m.ConvertScene(scene);
    ExpectKeys(Find(hips->LclTranslation, "X"), {{0, 1.0f}, {kSecond, 3.0f}});
    EXPECT_NEAR(Find(hips->LclTranslation, "X")->KeyGetRightDerivative(0), 0.5f, 1e-6f);
    ExpectKeys(Find(hips->LclScaling, "Y"), {{0, 0.02f}});
    ExpectKeys(Find(spine->LclTranslation, "X"), {{0, 100.0f}}, 0.0f);
}

TEST_F(CurveConvertTest, FiniteTimeEvaluationReadsTheCurves) {
    FbxNode* node = Child(scene->GetRootNode(), "node");
    node->LclTranslation.Set(FbxDouble3{0, 7, 0});
    Curve(node->LclTranslation, "X", {{0, 0.0f}, {kSecond, 10.0f}});
    FbxNode* child = Child(node, "child");
    child->LclTranslation.Set(FbxDouble3{1, 0, 0});
    // Half a second into a linear 0 to 10: x = 5; y keeps the curve node's value 7.
    ExpectVectorNear(child->EvaluateGlobalTransform(FbxTime(kSecond / 2)).GetT(), 6, 7, 0, 1e-6);
    ExpectVectorNear(node->EvaluateGlobalTransform().GetT(), 0, 7, 0);  // the infinite time reads properties
}

TEST(FbxUnwrapTest, WholeTurns) {
    // (angle, previous, result): whole turns until within 180; exactly 180 stays.
    const double cases[][3] = {{350, 0, -10}, {-190, 0, 170}, {180, 0, 180}, {540, 0, -180}, {10, 720, 730}};
    for (const auto& c : cases) EXPECT_DOUBLE_EQ(FbxUnwrapDegrees(c[0], c[1]), c[2]) << c[0] << " near " << c[1];
    EXPECT_TRUE(std::isnan(FbxUnwrapDegrees(kNan, 0)));
    EXPECT_EQ(FbxUnwrapDegrees(5, kNan), 5.0);
}

}  // namespace
