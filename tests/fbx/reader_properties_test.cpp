// Properties70 and templates: flags from P letters, values by the property's type,
// user limits and enum lists, and what a template gives a new object.
#include <gtest/gtest.h>

#include "fbx/fbx_properties70.h"
#include "model_test_util.h"

namespace modeltest {
namespace {

TEST(PropertyFlagsTest, LettersAndDigits) {
    struct Row {
        const char* letters;
        uint32_t flags;
    };
    // A=2, +=4, U=16, H=32; L digit << 7 and M digit << 11, with '1'-'9' as 1-9,
    // 'a'-'d' as 10-13 and anything else (or nothing) as 15.
    const Row rows[] = {
        {"", 0},
        {"A", 2},
        {"A+", 2 + 4},
        {"A+U", 2 + 4 + 16},
        {"H", 32},
        {"L1", 1 << 7},
        {"Ld", 13 << 7},
        {"Lx", 15 << 7},
        {"L", 15 << 7},  // no digit behind the letter
        {"M3", 3 << 11},
        {"Ma", 10 << 11},
        {"A+UHL9M9", 2 + 4 + 16 + 32 + (9 << 7) + (9 << 11)},
        {"zA?", 2},  // other characters are skipped
        {"LA", 15 << 7},  // the character behind L is its digit, even a letter
    };
    for (const Row& row : rows) EXPECT_EQ(FbxParsePropertyFlags(row.letters), row.flags) << row.letters;
}

// One Model with the given P records; the node that comes out.
struct OneNode {
    std::unique_ptr<Imported> file;
    FbxNode* node = nullptr;
};

OneNode ReadNode(const std::function<void(Record&)>& fill, const std::function<void(Record&)>& definitions = {}) {
    FileParts parts;
    Record model = Object("Model", 10, "Cube", "Model", "Mesh");
    fill(model);
    parts.objects.Child(model);
    if (definitions) definitions(parts.definitions);
    parts.connections.Child(fbxwriter::ConnectionOO(10, 0));
    OneNode result;
    result.file = Import(parts);
    result.node = result.file->Find<FbxNode>("Cube");
    return result;
}

TEST(PropertyRecordTest, ValuesByType) {
    OneNode n = ReadNode([](Record& m) {
        P(m, "Lcl Translation", "Lcl Translation", "", "A").Double(1).Double(2).Double(3);
        P(m, "MyInt", "int", "Integer", "").Int(-7);
        P(m, "MyText", "KString", "", "").String("hello");
        P(m, "MyBool", "bool", "", "").Int(2);
        P(m, "MyFloat", "float", "", "").Double(0.5);
        P(m, "MyTime", "KTime", "Time", "").Long(46186158000);
        P(m, "Short3", "Vector3D", "Vector", "").Double(4);  // too few values: the rest read as 0
        P(m, "Ghost", "NoSuchType", "", "").Int(1);          // unknown type, empty sub type: skipped
        P(m, "ViaSub", "NoSuchType", "Number", "").Double(2.5);  // the sub type names the type
        P(m, "nope|X", "Number", "", "").Double(1);          // no parent "nope": skipped
    });
    ASSERT_TRUE(n.file->ok) << n.file->Status().GetErrorString();
    ASSERT_NE(n.node, nullptr);
    EXPECT_EQ(n.node->LclTranslation.Get(), (FbxDouble3{1, 2, 3}));
    EXPECT_EQ(n.node->FindProperty("MyInt").Get<int>(), -7);
    EXPECT_EQ(n.node->FindProperty("MyText").Get<std::string>(), "hello");
    EXPECT_TRUE(n.node->FindProperty("MyBool").Get<bool>());
    EXPECT_EQ(n.node->FindProperty("MyFloat").Get<float>(), 0.5f);
    EXPECT_EQ(n.node->FindProperty("MyFloat").GetType(), eFbxFloat);
    int64_t ticks = 0;
    EXPECT_TRUE(n.node->FindProperty("MyTime").Get(&ticks, eFbxTime));
    EXPECT_EQ(ticks, 46186158000);
    EXPECT_EQ(n.node->FindProperty("Short3").Get<FbxDouble3>(), (FbxDouble3{4, 0, 0}));
    EXPECT_FALSE(n.node->FindProperty("Ghost").IsValid());
    EXPECT_EQ(n.node->FindProperty("ViaSub").GetType(), eFbxDouble);
    EXPECT_EQ(n.node->FindProperty("ViaSub").Get<double>(), 2.5);
    EXPECT_FALSE(n.node->FindPropertyHierarchical("nope|X").IsValid());
    // A property the file adds is marked imported; a class property is not.
    EXPECT_TRUE(n.node->FindProperty("MyInt").GetFlag(FbxPropertyFlag::Imported));
    EXPECT_FALSE(n.node->LclTranslation.GetFlag(FbxPropertyFlag::Imported));
}

TEST(PropertyRecordTest, ExistingFlagsChangeOnlyWhereTheLettersDiffer) {
    OneNode n = ReadNode([](Record& m) {
        P(m, "Lcl Rotation", "Lcl Rotation", "", "+HL2").Double(0).Double(0).Double(0);  // drops A
        P(m, "Visibility", "Visibility", "", "AM4").Double(1);
    });
    ASSERT_TRUE(n.file->ok);
    // Lcl Rotation was animatable from its class: A cleared, + H set, lock 2.
    EXPECT_EQ(n.node->LclRotation.GetFlags(), 4u + 32u + (2u << 7));
    EXPECT_EQ(n.node->Visibility.GetFlags(), 2u + (4u << 11));
}

TEST(PropertyRecordTest, UserLimitsAndEnumLists) {
    OneNode n = ReadNode([](Record& m) {
        P(m, "Weight", "Number", "", "AU").Double(0.25).Double(-1).Double(2);
        P(m, "Count", "int", "Integer", "U").Int(3).Int(0).Int(10);
        P(m, "Mode", "enum", "", "U").Int(2).String("Off~Half~Full");
        P(m, "NoLimits", "Number", "", "U").Double(5);  // nothing behind the value
    });
    ASSERT_TRUE(n.file->ok);
    FbxProperty weight = n.node->FindProperty("Weight");
    EXPECT_EQ(weight.Get<double>(), 0.25);
    EXPECT_TRUE(weight.HasMinLimit());
    EXPECT_EQ(weight.GetMinLimit(), -1.0);
    EXPECT_EQ(weight.GetMaxLimit(), 2.0);
    EXPECT_EQ(n.node->FindProperty("Count").GetMaxLimit(), 10.0);
    FbxProperty mode = n.node->FindProperty("Mode");
    ASSERT_EQ(mode.GetEnumCount(), 3);
    EXPECT_STREQ(mode.GetEnumValue(2), "Full");
    EXPECT_EQ(mode.Get<int>(), 2);
    EXPECT_FALSE(n.node->FindProperty("NoLimits").HasMinLimit());
}

TEST(PropertyRecordTest, ChannelsOfCurveNodesGoBelowTheCompound) {
    FileParts parts;
    Record curveNode = Object("AnimationCurveNode", 20, "T", "AnimCurveNode", "");
    P(curveNode, "d|X", "Number", "", "A").Double(1.5);
    P(curveNode, "d|Y", "Number", "", "A").Double(2.5);
    parts.objects.Child(curveNode);
    auto file = Import(parts);
    ASSERT_TRUE(file->ok);
    FbxObject* node = file->Find("T");
    ASSERT_NE(node, nullptr);
    EXPECT_EQ(node->FindPropertyHierarchical("d|Y").Get<double>(), 2.5);
    EXPECT_EQ(node->FindProperty("d").GetChild().Get<double>(), 1.5);
}

TEST(PropertyRecordTest, ManyPropertiesOfAPlainObjectStayDistinct) {
    // A plain class has no properties of its own: all come from the file, and past a
    // handful they are found through an index. A repeated name updates its property.
    FileParts parts;
    Record character = Object("Constraint", 9, "Hero", "Character", "Character");
    const int count = 40;
    for (int k = 0; k < count; ++k) {
        std::string name = "u" + std::to_string(k);
        P(character, name.c_str(), "int", "Integer", "U").Int(k);
    }
    P(character, "u7", "int", "Integer", "U").Int(700);
    parts.objects.Child(character);
    auto file = Import(parts);
    ASSERT_TRUE(file->ok);
    FbxObject* hero = file->Find("Hero");
    ASSERT_NE(hero, nullptr);
    EXPECT_EQ(hero->GetPropertyCount(), count);
    for (int k = 0; k < count; ++k) {
        std::string name = "u" + std::to_string(k);
        EXPECT_EQ(hero->FindProperty(name.c_str()).Get<int>(), k == 7 ? 700 : k) << name;
    }
    EXPECT_TRUE(hero->FindProperty("U39", false).IsValid());  // case-insensitive walks the list
}

TEST(TemplateTest, TemplatesOverrideClassDefaultsAndObjectsOverrideTemplates) {
    FileParts parts;
    Record& templ = Template(parts.definitions, "Model", "FbxNode");
    P(templ, "Lcl Scaling", "Lcl Scaling", "", "A+").Double(2).Double(2).Double(2);
    P(templ, "Visibility", "Visibility", "", "A").Double(0.5);
    P(templ, "Extra", "int", "Integer", "U").Int(7);
    // A second template for the same class is dropped.
    Record& second = Template(parts.definitions, "NodeAttribute", "FbxNode");
    P(second, "Lcl Scaling", "Lcl Scaling", "", "A").Double(9).Double(9).Double(9);
    Record plain = Object("Model", 10, "Plain", "Model", "Null");
    Record own = Object("Model", 11, "Own", "Model", "Null");
    P(own, "Lcl Scaling", "Lcl Scaling", "", "A").Double(3).Double(3).Double(3);
    parts.objects.Child(plain);
    parts.objects.Child(own);
    auto file = Import(parts);
    ASSERT_TRUE(file->ok);
    FbxNode* a = file->Find<FbxNode>("Plain");
    FbxNode* b = file->Find<FbxNode>("Own");
    ASSERT_TRUE(a && b);
    EXPECT_EQ(a->LclScaling.Get(), (FbxDouble3{2, 2, 2}));
    EXPECT_EQ(b->LclScaling.Get(), (FbxDouble3{3, 3, 3}));
    EXPECT_EQ(a->Visibility.Get(), 0.5);
    EXPECT_EQ(a->AxisLen.Get(), 10.0);  // not in the template: the class default
    EXPECT_EQ(a->FindProperty("Extra").Get<int>(), 7);
    EXPECT_TRUE(a->FindProperty("Extra").GetFlag(FbxPropertyFlag::UserDefined));
    // The template's flag bits are added to the object's own: Lcl Scaling animated.
    EXPECT_TRUE(a->LclScaling.GetFlag(FbxPropertyFlag::Animated));
    EXPECT_FALSE(a->LclScaling.IsValueSet());
    EXPECT_TRUE(b->LclScaling.IsValueSet());
}

TEST(TemplateTest, CurvesTakeTheTemplateOfTheirBaseClass) {
    FileParts parts;
    Record& templ = Template(parts.definitions, "AnimationCurve", "FbxAnimCurve");
    P(templ, "Tag", "int", "Integer", "").Int(42);
    parts.objects.Child(Object("AnimationCurve", 30, "", "AnimCurve", ""));
    auto file = Import(parts);
    ASSERT_TRUE(file->ok);
    int found = 0;
    for (const FbxProperty& s : file->scene->RootProperty.Sources()) {
        FbxObject* o = s.GetFbxObject();
        if (o->GetClassId().GetName() == std::string("FbxAnimCurveKFCurve")) {
            EXPECT_EQ(o->FindProperty("Tag").Get<int>(), 42);
            ++found;
        }
    }
    EXPECT_EQ(found, 1);
}

}  // namespace
}  // namespace modeltest
