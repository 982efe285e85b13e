// Animation: FbxTime conversions, the key store, curve evaluation, reading AnimationCurve
// records, and stacks, layers and curve nodes in a scene.
#include <algorithm>
#include <cmath>
#include <map>
#include <sstream>

#include "fbx/fbx_anim.h"
#include "fbx/fbx_anim_curve_read.h"
#include "fbx/fbx_anim_eval.h"
#include "fbx/fbx_anim_keys.h"
#include "fbx/fbx_deformer.h"
#include "fbx/fbx_geometry.h"
#include "fbx/fbx_time.h"
#include "fbx_fixture.h"

namespace {

using namespace fbxtest;

constexpr FbxLongLong kSecond = 141120000;

TEST(FbxTime, ConversionsToTicks) {
    for (const testsupport::TableRow& row : Table("time_conversions.txt")) {
        FbxTime time;
        time.SetSecondDouble(testsupport::Number(row[1]));
        const FbxLongLong got = row[0] == "from seconds" ? time.Get() : FbxConvertOldUnitTicks(std::stoll(row[1]));
        EXPECT_EQ(got, std::stoll(row[2])) << "line " << row.line;
    }
    EXPECT_EQ(FbxTime(211680000).GetSecondDouble(), 1.5);
}

// Keys come out sorted by time whatever the order of their insertion and removal, each
// with the value given to its time (i at 10 i ticks).
TEST_F(SceneTest, CurveKeysStaySortedThroughInsertionsAndRemovals) {
    FbxAnimCurve* curve = FbxAnimCurve::Create(scene, "curve");
    auto add = [curve](int i) { curve->KeySetValue(curve->KeyAdd(FbxTime(FbxLongLong(i) * 10)), float(i)); };
    auto expectSorted = [curve](int count) {
        ASSERT_EQ(curve->KeyGetCount(), count);
        for (int i = 0; i < count; ++i) {
            EXPECT_EQ(curve->KeyGetTime(i).Get(), FbxLongLong(i) * 10) << i;
            EXPECT_EQ(curve->KeyGetValue(i), float(i)) << i;
        }
    };
    // Odd times first, descending, then the even ones: every insertion lands between keys.
    for (int i = 199; i >= 1; i -= 2) add(i);
    for (int i = 0; i < 200; i += 2) add(i);
    expectSorted(200);
    // A time already present returns its key instead of adding one.
    EXPECT_EQ(curve->KeyAdd(FbxTime(420)), 42);
    EXPECT_EQ(curve->KeyGetCount(), 200);
    ASSERT_TRUE(curve->KeyRemove(84));
    EXPECT_EQ(curve->KeyGetTime(84).Get(), 850);
    EXPECT_EQ(curve->KeyGetTime(83).Get(), 830);
    add(84);
    expectSorted(200);
    while (curve->KeyGetCount() > 42) curve->KeyRemove(curve->KeyGetCount() - 1);
    add(42);
    expectSorted(43);
    EXPECT_FALSE(curve->KeyRemove(43));
}

TEST(FbxAnimKeyStore, ChangingASharedAttributeGivesTheKeyItsOwnRecord) {
    FbxAnimKeyStore store;
    FbxAnimKeyAttr linear;
    linear.flags = kFbxInterpolationLinear;
    const uint32_t shared = store.AddAttr(linear);
    for (int i = 0; i < 3; ++i) store.AppendKey(i, 0.0f, shared);
    EXPECT_EQ(store.Attr(0).refCount, 3);

    store.MutableAttr(1).flags = kFbxInterpolationConstant;
    EXPECT_EQ(store.Flags(0), uint32_t(kFbxInterpolationLinear));
    EXPECT_EQ(store.Flags(1), uint32_t(kFbxInterpolationConstant));
    EXPECT_EQ(store.Flags(2), uint32_t(kFbxInterpolationLinear));
    EXPECT_EQ(store.Attr(0).refCount, 2);
    EXPECT_EQ(store.Attr(1).refCount, 1);

    // A copy is independent of its source.
    FbxAnimKeyStore copy = store;
    copy.MutableAttr(0).flags = kFbxInterpolationCubic;
    EXPECT_EQ(store.Flags(0), uint32_t(kFbxInterpolationLinear));
    EXPECT_EQ(store.Flags(2), uint32_t(kFbxInterpolationLinear));
}

FbxTime At(double seconds) { return FbxTime(FbxLongLong(std::llround(seconds * double(kSecond)))); }

// Flag names joined by '+'; an unknown name throws, failing the test.
uint32_t FlagBits(const std::string& names) {
    const std::map<std::string, uint32_t> kNames = {
        {"const", kFbxInterpolationConstant}, {"next", kFbxConstantNext}, {"linear", kFbxInterpolationLinear},
        {"user", kFbxInterpolationCubic | kFbxTangentUser}, {"auto", kFbxInterpolationCubic | kFbxTangentAuto},
        {"ti", kFbxTangentTimeIndependent}, {"tcb", kFbxInterpolationCubic | kFbxTangentTCB},
        {"weighted", kFbxWeightedMask}, {"wright", kFbxWeightedRight}};
    uint32_t flags = 0;
    std::stringstream in(names);
    for (std::string name; std::getline(in, name, '+');) flags |= kNames.at(name);
    return flags;
}

// Keys as the tables under data/ write them: seconds:value[:flags[:word0[:word1[:word2]]]],
// space separated (see curve_values.txt).
FbxAnimKeyStore Curve(const std::string& keys) {
    FbxAnimKeyStore store;
    std::stringstream in(keys);
    for (std::string key; in >> key;) {
        std::vector<std::string> part;
        std::stringstream fields(key);
        for (std::string field; std::getline(fields, field, ':');) part.push_back(field);
        part.resize(6);
        FbxAnimKeyAttr attr;
        attr.flags = part[2].empty() ? uint32_t(kFbxInterpolationLinear) : FlagBits(part[2]);
        attr.data[0] = FbxFloatToBits(float(testsupport::Number(part[3])));
        attr.data[1] = FbxFloatToBits(float(testsupport::Number(part[4])));
        const bool bits = part[5].find('.') != std::string::npos;
        attr.data[2] = bits ? FbxFloatToBits(float(testsupport::Number(part[5]))) : uint32_t(std::stoul("0" + part[5]));
        const FbxTime time = At(testsupport::Number(part[0]));
        store.AppendKey(time.Get(), float(testsupport::Number(part[1])), store.AddAttr(attr));
    }
    return store;
}

TEST(FbxAnimEval, ValuesOfEveryInterpolation) {
    const testsupport::Table rows = Table("curve_values.txt");
    ASSERT_GT(rows.size(), 15u);
    for (const testsupport::TableRow& row : rows) {
        const FbxAnimKeyStore store = Curve(row[1]);
        EXPECT_FLOAT_EQ(EvaluateCurve(store, At(testsupport::Number(row[2]))), float(testsupport::Number(row[3])))
            << "line " << row.line << ": " << row[0];
    }
}

TEST(FbxAnimEval, DerivativesAtKeysAndInsideIntervals) {
    const testsupport::Table rows = Table("curve_derivatives.txt");
    ASSERT_GT(rows.size(), 10u);
    for (const testsupport::TableRow& row : rows) {
        SCOPED_TRACE(testing::Message() << "line " << row.line << ": " << row[0]);
        const FbxAnimKeyStore store = Curve(row[1]);
        const FbxTime time = At(testsupport::Number(row[2]));
        EXPECT_FLOAT_EQ(EvaluateCurveLeftDerivative(store, time), float(testsupport::Number(row[3])));
        EXPECT_FLOAT_EQ(EvaluateCurveRightDerivative(store, time), float(testsupport::Number(row[4])));
    }
}

TEST(FbxAnimEval, Extrapolation) {
    const char* const kModes[] = {"", "Constant", "Repetition", "MirrorRepetition", "KeepSlope", "RelativeRepetition"};
    const testsupport::Table rows = Table("curve_extrapolation.txt");
    ASSERT_GT(rows.size(), 15u);
    for (const testsupport::TableRow& row : rows) {
        SCOPED_TRACE(testing::Message() << "line " << row.line << ": " << row[0] << " " << row[1]);
        FbxAnimKeyStore store = Curve("1:0 3:4");
        const auto mode = FbxExtrapolation(std::find(kModes, std::end(kModes), row[2]) - kModes);
        const uint32_t count = row[3] == "-" ? kFbxUnlimited : uint32_t(std::stoul(row[3]));
        (row[0] == "after" ? store.postExtrapolation : store.preExtrapolation) = mode;
        (row[0] == "after" ? store.postExtrapolationCount : store.preExtrapolationCount) = count;
        const FbxTime time = At(testsupport::Number(row[4]));
        EXPECT_FLOAT_EQ(EvaluateCurve(store, time), float(testsupport::Number(row[5])));
        EXPECT_FLOAT_EQ(EvaluateCurveRightDerivative(store, time), float(testsupport::Number(row[6])));
    }
}

TEST(FbxAnimEval, CurvesWithoutKeysOrWithOneKey) {
    FbxAnimKeyStore empty;
    empty.defaultValue = 7.5f;
    EXPECT_EQ(EvaluateCurve(empty, At(1)), 7.5f);
    EXPECT_EQ(EvaluateCurveLeftDerivative(empty, At(1)), 0.0f);

    // A lone key's slopes are those of a first and a last key: 0, even when kept.
    FbxAnimKeyStore one = Curve("1:3:user:5:5");
    one.preExtrapolation = FbxExtrapolation::KeepSlope;
    EXPECT_EQ(EvaluateCurve(one, At(0)), 3.0f);
    EXPECT_EQ(EvaluateCurveRightDerivative(one, At(0)), 0.0f);
}

TEST(FbxAnimEval, SearchStartsAtTheGivenIndexAndReturnsTheInterval) {
    std::string keys;
    for (int i = 0; i < 100; ++i) keys += std::to_string(i) + ":" + std::to_string(i) + " ";
    const FbxAnimKeyStore store = Curve(keys);
    int index = 0;
    EXPECT_EQ(EvaluateCurve(store, At(50.5), &index), 50.5f);
    EXPECT_EQ(index, 50);
    index = 99;  // searching downwards
    EXPECT_EQ(EvaluateCurve(store, At(10.25), &index), 10.25f);
    EXPECT_EQ(index, 10);
    index = 1000;  // out of range: only a starting point
    EXPECT_EQ(EvaluateCurve(store, At(98), &index), 98.0f);
    EXPECT_EQ(index, 98);
    // Without an index the store remembers its own.
    EXPECT_EQ(EvaluateCurve(store, At(20.5)), 20.5f);
    EXPECT_EQ(store.lastSearchIndex, 20);
}

TEST(FbxAnimEval, KeysSharingATimeGiveNoInfinity) {
    const FbxAnimKeyStore store = Curve("0:0 1:5 1:9:tcb 2:1");
    for (double seconds : {0.5, 1.0, 1.5}) {
        EXPECT_TRUE(std::isfinite(EvaluateCurve(store, At(seconds)))) << seconds;
        EXPECT_TRUE(std::isfinite(EvaluateCurveLeftDerivative(store, At(seconds)))) << seconds;
        EXPECT_TRUE(std::isfinite(EvaluateCurveRightDerivative(store, At(seconds)))) << seconds;
    }
}

// A value as curve_reads.txt writes it: its code, then its numbers.
Value TableValue(const std::string& text) {
    std::stringstream in(text);
    char code = 0;
    in >> code;
    std::vector<std::string> items;
    for (std::string item; in >> item;) items.push_back(item);
    std::vector<int64_t> ints;
    std::vector<double> reals;
    std::vector<float> floats;
    for (const std::string& item : items) {
        if (code == 'l' || code == 'i') ints.push_back(std::stoll(item));
        reals.push_back(item[0] == '#' ? 0.0 : testsupport::Number(item));
        floats.push_back(item[0] == '#' ? FbxBitsToFloat(uint32_t(std::stoul(item.substr(1)))) : float(reals.back()));
    }
    if (code == 'l') return Value::LongArray(ints);
    if (code == 'i') return Value::IntArray(std::vector<int32_t>(ints.begin(), ints.end()));
    if (code == 'f') return Value::FloatArray(floats);
    if (code == 'd') return Value::DoubleArray(reals);
    return Value::Double(reals.at(0));
}

struct ReadResult {
    bool ok = false;
    FbxStatus status;
    FbxAnimKeyStore store;
};

// Writes a file of the given version, header version and time-unit definition whose
// Objects hold one AnimationCurve of the fields ("Name=value; ..."), opens it the way the
// reader does and reads the curve's keys. Extrapolations are written "Type repetitions".
ReadResult ReadCurve(const std::string& kind, const std::string& fields) {
    std::stringstream kindWords(kind);
    uint32_t version = 0;
    int32_t headerVersion = 0;
    std::string definition;
    kindWords >> version >> headerVersion >> definition;
    Record objects("Objects");
    Record& curve = objects.Child(fbxwriter::ObjectRecord("AnimationCurve", 7, "", "AnimCurve", ""));
    std::stringstream in(fields);
    for (std::string field; std::getline(in, field, ';');) {
        const size_t start = field.find_first_not_of(' '), eq = field.find('=');
        Record& record = curve.Add(field.substr(start, eq - start));
        if (record.name.find("Extrapolation") == std::string::npos) {
            record.Add(TableValue(field.substr(eq + 1)));
        } else {
            record.Add("Type").Char(field[eq + 1]);
            record.Add("Repetition").Int(std::stoi(field.substr(eq + 2)));
        }
    }
    const std::optional<int32_t> tc = definition == "-" ? std::nullopt : std::optional(std::stoi(definition));
    const std::vector<uint8_t> bytes =
        fbxwriter::Write({fbxwriter::HeaderExtension(headerVersion, int32_t(version), tc), objects}, Version(version));

    ReadResult result;
    FbxStatus openStatus;
    auto stream = Open(bytes, openStatus);
    EXPECT_TRUE(stream) << openStatus.GetErrorString();
    if (!stream) return result;
    EXPECT_TRUE(stream->BeginField("Objects") && stream->BeginBlock());
    EXPECT_TRUE(stream->BeginField("AnimationCurve") && stream->BeginBlock());
    result.ok = ReadAnimCurveKeyStore(*stream, result.store, result.status);
    return result;
}

TEST(FbxAnimRead, KeysAttributesAndLengthMismatches) {
    for (const testsupport::TableRow& row : Table("curve_reads.txt")) {
        SCOPED_TRACE(testing::Message() << "line " << row.line << ": " << row[0]);
        const ReadResult r = ReadCurve(row[1], row[2]);
        EXPECT_EQ(r.ok, row[3] == "ok");
        EXPECT_EQ(r.ok ? "ok" : r.status.GetErrorString(), row[3]);
        std::string keys;
        for (int k = 0; k < r.store.KeyCount(); ++k) {
            keys += (k > 0 ? " " : "") + std::to_string(r.store.Key(k).time) + ":" + Real(r.store.Value(k), 9) + ":" +
                    std::to_string(r.store.Flags(k)) + ":" + Real(r.store.Word(k, 0), 9) + "," +
                    Real(r.store.Word(k, 1), 9) + "," + std::to_string(r.store.Attr(k).data[2]) + ":" +
                    std::to_string(r.store.Attr(k).refCount);
        }
        EXPECT_EQ(keys, row[4]);
    }
}

TEST(FbxAnimRead, DefaultAndExtrapolation) {
    const ReadResult r = ReadCurve("7400 1003 -", "Default=D 2.5; Pre-Extrapolation=M2; Post-Extrapolation=K-1");
    ASSERT_TRUE(r.ok);
    EXPECT_EQ(r.store.KeyCount(), 0);
    EXPECT_EQ(EvaluateCurve(r.store, FbxTime(kSecond)), 2.5f);
    EXPECT_EQ(r.store.preExtrapolation, FbxExtrapolation::MirrorRepetition);
    EXPECT_EQ(r.store.preExtrapolationCount, 2u);
    EXPECT_EQ(r.store.postExtrapolation, FbxExtrapolation::KeepSlope);
    EXPECT_EQ(r.store.postExtrapolationCount, kFbxUnlimited);
}

struct FbxAnimObjects : SceneTest {
    FbxNode* node = FbxNode::Create(scene, "node");
    FbxAnimStack* stack = FbxAnimStack::Create(scene, "Take 001");
    FbxAnimLayer* base = FbxAnimLayer::Create(scene, "Base Layer");
    FbxAnimLayer* second = FbxAnimLayer::Create(scene, "Layer 2");
    FbxAnimObjects() {
        node->LclTranslation.Set(FbxDouble3{1, 2, 3});
        stack->ConnectSrcObject(base);
        stack->ConnectSrcObject(second);
    }

    // A curve node as files give it: named "T", channels d|X, d|Y, d|Z, a source of the
    // property and of the layer.
    FbxAnimCurveNode* FileNode(FbxAnimLayer* layer) {
        FbxAnimCurveNode* fileNode = FbxAnimCurveNode::Create(scene, "T");
        for (const char* axis : {"X", "Y", "Z"}) fileNode->AddChannel(axis, FbxNumberDT, 9.0);
        node->LclTranslation.ConnectSrcObject(fileNode);
        layer->ConnectSrcObject(fileNode);
        return fileNode;
    }
};

TEST_F(FbxAnimObjects, CurvesAreMadeOnTheAskedLayerWithChannelsFromTheProperty) {
    FbxProperty& translation = node->LclTranslation;
    EXPECT_EQ(translation.GetCurve(base, "Lcl Translation", "Y", false), nullptr);
    EXPECT_EQ(translation.GetCurveNode(false), nullptr);

    FbxAnimCurve* y = translation.GetCurve(base, "Lcl Translation", "Y", true);
    ASSERT_NE(y, nullptr);
    EXPECT_EQ(y->KeyGetCount(), 0);
    EXPECT_EQ(translation.GetCurve(base, "Lcl Translation", "Y", false), y);
    EXPECT_EQ(translation.GetCurve(second, "Lcl Translation", "Y", false), nullptr);

    // Without a layer: the first layer of the scene's first stack.
    FbxAnimCurveNode* made = translation.GetCurveNode(false);
    ASSERT_NE(made, nullptr);
    EXPECT_EQ(made->GetChannelsCount(), 3);
    EXPECT_STREQ(made->GetChannelName(2), "Z");
    EXPECT_EQ(made->GetChannelValue("X", -1.0), 1.0);
    EXPECT_EQ(made->GetChannelValue("Z", -1.0), 3.0);
    EXPECT_EQ(made->GetChannelValue("W", -1.0), -1.0);
    EXPECT_EQ(made->GetCurve(1), y);
    EXPECT_EQ(made->GetCurve(0), nullptr);
}

TEST_F(FbxAnimObjects, TheNodeNameFiltersUnlessItIsThePropertyName) {
    FbxAnimCurveNode* fileNode = FileNode(base);
    FbxAnimCurve* z = fileNode->CreateCurve("T", 2);
    ASSERT_NE(z, nullptr);
    FbxProperty& translation = node->LclTranslation;
    struct Row {
        const char* nodeName;
        const char* channel;
        FbxAnimCurve* expected;
    };
    const Row rows[] = {
        {"Lcl Translation", "Z", z},
        {nullptr, "Z", z},
        {"T", "Z", z},
        {"R", "Z", nullptr},
        {"T", "W", nullptr},
        {"T", "X", nullptr},  // channel without a curve
    };
    for (const Row& row : rows) {
        EXPECT_EQ(translation.GetCurve(base, row.nodeName, row.channel, false), row.expected)
            << (row.nodeName ? row.nodeName : "null") << " " << row.channel;
    }
    // A null channel takes the first one, which gets its curve when asked to.
    FbxAnimCurve* x = translation.GetCurve(base, "Lcl Translation", nullptr, true);
    ASSERT_NE(x, nullptr);
    EXPECT_EQ(fileNode->GetCurve(0), x);
    EXPECT_EQ(fileNode->GetChannelValue(0, 0.0), 9.0);
}

TEST_F(FbxAnimObjects, ShapeChannelCurvesAreFoundOrMadeOnTheLayer) {
    FbxMesh* mesh = FbxMesh::Create(scene, "mesh");
    FbxBlendShape* blendShape = FbxBlendShape::Create(scene, "shapes");
    mesh->ConnectSrcObject(FbxSkin::Create(scene, "skin"));
    mesh->ConnectSrcObject(blendShape);
    FbxBlendShapeChannel* animated = FbxBlendShapeChannel::Create(scene, "smile");
    FbxBlendShapeChannel* still = FbxBlendShapeChannel::Create(scene, "blink");
    blendShape->ConnectSrcObject(animated);
    blendShape->ConnectSrcObject(still);

    FbxAnimCurve* smile = animated->DeformPercent.GetCurve(base, "DeformPercent", nullptr, true);
    ASSERT_NE(smile, nullptr);
    smile->KeySetValue(smile->KeyAdd(FbxTime(0)), 50.0f);

    FbxStatus status(kFbxFailure);
    EXPECT_EQ(mesh->GetShapeChannel(0, 0, base, true, &status), smile);
    EXPECT_EQ(status.GetCode(), kFbxSuccess);

    FbxAnimCurve* blink = mesh->GetShapeChannel(0, 1, second, true, &status);
    ASSERT_NE(blink, nullptr);
    EXPECT_EQ(blink->KeyGetCount(), 0);
    EXPECT_EQ(mesh->GetShapeChannel(0, 1, second, true, &status), blink);
    EXPECT_EQ(mesh->GetShapeChannel(0, 1, base, false, &status), nullptr);

    struct Refusal {
        int blendShape, channel;
        FbxAnimLayer* layer;
        FbxStatusCode code;
    };
    const Refusal refusals[] = {
        {0, 0, nullptr, kFbxFailure},
        {1, 0, base, kFbxIndexOutOfRange},  // the skin does not count as a blend shape
        {-1, 0, base, kFbxIndexOutOfRange},
        {0, 2, base, kFbxIndexOutOfRange},
    };
    for (const Refusal& r : refusals) {
        status.Clear();
        EXPECT_EQ(mesh->GetShapeChannel(r.blendShape, r.channel, r.layer, true, &status), nullptr);
        EXPECT_EQ(status.GetCode(), r.code) << r.blendShape << " " << r.channel;
    }
}

// Evenly spaced keys are kept as a start and a step until an edit breaks the spacing;
// every state must read back the same times. Old-unit ticks: one old second is
// 46186158000 ticks and reads as 141120000 (the rest, (0 + 164) * 141120 / 46186158,
// rounds to 0).
TEST(FbxAnimKeyStore, EvenTimesSurviveEveryEdit) {
    constexpr FbxLongLong kOld = 46186158000LL, kNew = 141120000LL;
    struct Row {
        const char* name;
        bool oldUnit;
        FbxLongLong step;  // in file ticks
        FbxLongLong read;  // the step as read
    };
    const Row rows[] = {{"new unit", false, 10, 10}, {"old unit", true, kOld, kNew}};
    for (const Row& row : rows) {
        FbxAnimKeyStore store;
        FbxAnimKeyAttr linear;
        linear.flags = kFbxInterpolationLinear;
        store.Assign({0, row.step, 2 * row.step, 3 * row.step}, row.oldUnit, {0, 1, 2, 3}, {linear}, {4});
        ASSERT_EQ(store.KeyCount(), 4) << row.name;
        for (int i = 0; i < 4; ++i) EXPECT_EQ(store.KeyTime(i), i * row.read) << row.name;

        store.KeyRemove(0);  // 1 2 3
        EXPECT_EQ(store.KeyTime(0), row.read) << row.name;
        store.AppendKey(4 * row.read, 4.0f, store.AddAttr(linear));  // 1 2 3 4
        store.AppendKey(6 * row.read, 6.0f, store.AddAttr(linear));  // spacing broken: 1 2 3 4 6
        const int at = store.KeyAdd(FbxTime(5 * row.read));           // 1 2 3 4 5 6
        EXPECT_EQ(at, 4) << row.name;
        store.SetValue(at, 5.0f);
        ASSERT_EQ(store.KeyCount(), 6) << row.name;
        for (int i = 0; i < 6; ++i) {
            EXPECT_EQ(store.KeyTime(i), (i + 1) * row.read) << row.name << " " << i;
            EXPECT_EQ(store.Value(i), float(i + 1)) << row.name << " " << i;
        }
        // The key added in the middle has a cubic record of its own; the first keys share theirs.
        EXPECT_EQ(store.Flags(4), uint32_t(kFbxInterpolationCubic | kFbxTangentAuto)) << row.name;
        EXPECT_EQ(store.Attr(0).refCount, 3) << row.name;
    }
}

}  // namespace
