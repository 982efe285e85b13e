#include "avatar/avatar_tables.h"

#include <algorithm>
#include <initializer_list>
#include <span>

// Constructed in this order: anchors, bind joints, the transfer table (the group names are
// compile-time data in the header).

const std::array<std::string_view, 4> FacialAnchorJointNames = {
    "L_eyeBrow_bind_JNT", "R_eyeBrow_bind_JNT", "R_eye_rig_base_JNT", "L_eye_rig_base_JNT",
};

const std::array<std::string_view, 73> BindJointNames = {
    "C_spine0002_bind_JNT", "C_spine0003_bind_JNT", "C_neck0001_bind_JNT", "C_neck0002_bind_JNT",
    "C_head_bind_JNT", "C_teethLower_bind_JNT", "C_tongue001_bind_JNT", "C_tongue002_bind_JNT",
    "C_tongue003_bind_JNT", "C_tongue004_bind_JNT", "L_tongueOut_bind_JNT", "R_tongueOut_bind_JNT",
    "C_teethUpper_bind_JNT", "L_eyeBrow_bind_JNT", "R_eyeBrow_bind_JNT", "R_clavicle_bind_JNT",
    "R_armUpper0001_bind_JNT", "R_armLower0001_bind_JNT", "R_hand0001_bind_JNT",
    "R_handMiddle0002_bind_JNT", "R_handMiddle0003_bind_JNT", "R_handMiddle0004_bind_JNT",
    "R_handPinky0002_bind_JNT", "R_handPinky0003_bind_JNT", "R_handPinky0004_bind_JNT",
    "R_handPointer0002_bind_JNT", "R_handPointer0003_bind_JNT", "R_handPointer0004_bind_JNT",
    "R_handRing0002_bind_JNT", "R_handRing0003_bind_JNT", "R_handRing0004_bind_JNT",
    "R_handThumb0002_bind_JNT", "R_handThumb0003_bind_JNT", "R_armLower0002_bind_JNT",
    "R_armUpper0002_bind_JNT", "L_clavicle_bind_JNT", "L_armUpper0001_bind_JNT",
    "L_armLower0001_bind_JNT", "L_hand0001_bind_JNT", "L_handMiddle0002_bind_JNT",
    "L_handMiddle0003_bind_JNT", "L_handMiddle0004_bind_JNT", "L_handPinky0002_bind_JNT",
    "L_handPinky0003_bind_JNT", "L_handPinky0004_bind_JNT", "L_handPointer0002_bind_JNT",
    "L_handPointer0003_bind_JNT", "L_handPointer0004_bind_JNT", "L_handRing0002_bind_JNT",
    "L_handRing0003_bind_JNT", "L_handRing0004_bind_JNT", "L_handThumb0002_bind_JNT",
    "L_handThumb0003_bind_JNT", "L_armLower0002_bind_JNT", "L_armUpper0002_bind_JNT",
    "L_chest_bind_JNT", "R_chest_bind_JNT", "L_legUpper0001_bind_JNT", "L_legLower0001_bind_JNT",
    "L_foot0001_bind_JNT", "L_foot0002_bind_JNT", "L_legLower0002_bind_JNT",
    "L_legUpper0002_bind_JNT", "R_legUpper0001_bind_JNT", "R_legLower0001_bind_JNT",
    "R_foot0001_bind_JNT", "R_foot0002_bind_JNT", "R_legLower0002_bind_JNT",
    "R_legUpper0002_bind_JNT", "L_legRear_bind_JNT", "R_legRear_bind_JNT", "R_legFront_bind_JNT",
    "L_legFront_bind_JNT",
};

namespace {
// Runs of shape names that several groups share, each in the order the runtime expects.
using NameRun = std::span<const std::string_view>;

constexpr std::string_view kBrows[] = {
    "ai_browDown_L", "ai_browDown_R", "ai_browInnerDn_L", "ai_browInnerDn_R", "ai_browInnerIn_L",
    "ai_browInnerIn_R", "ai_browInnerUp_L", "ai_browInnerUp_R", "ai_browMidDown_L", "ai_browMidDown_R",
    "ai_browMidUp_L", "ai_browMidUp_R", "ai_browOuterUp_L", "ai_browOuterUp_R", "ai_browUp_L", "ai_browUp_R",
};
constexpr std::string_view kCheeks[] = {
    "ai_cheekPuff_L", "ai_cheekPuff_R", "ai_cheekSquint_L", "ai_cheekSquint_R",
};
constexpr std::string_view kMouth[] = {
    "ai_lipLowerUp_C", "ai_lipLowerUp_L", "ai_lipLowerUp_R", "ai_lipLowerWide_L", "ai_lipLowerWide_R",
    "ai_lipLower_C", "ai_lipLower_L", "ai_lipLower_R", "ai_lipUpperDown_C", "ai_lipUpperDown_L",
    "ai_lipUpperDown_R", "ai_lipUpperWide_L", "ai_lipUpperWide_R", "ai_lipUpper_C", "ai_lipUpper_L",
    "ai_lipUpper_R", "ai_mouthDimple_L", "ai_mouthDimple_R", "ai_mouthDn", "ai_mouthFrown_L",
    "ai_mouthFrown_R", "ai_mouthIn_L", "ai_mouthIn_R", "ai_mouthLeft", "ai_mouthOut", "ai_mouthRight",
    "ai_mouthRollLower", "ai_mouthRollUpper", "ai_mouthShrugLower", "ai_mouthShrugUpper", "ai_mouthSmile_L",
    "ai_mouthSmile_R", "ai_mouthStretch_L", "ai_mouthStretch_R", "ai_mouthUp", "ai_mouthUpperDown",
};
constexpr std::string_view kNose[] = {
    "ai_noseSneer_L", "ai_noseSneer_R",
};
constexpr std::string_view kLipCorners[] = {
    "ca_lipCornerPinch_L", "ca_lipCornerPinch_R", "ca_lipCornerRound_L", "ca_lipCornerRound_R",
    "ca_lipCornerSmile_L", "ca_lipCornerSmile_R",
};
constexpr std::string_view kEyes[] = {
    "ai_eyeInUpperClose_L", "ai_eyeInUpperClose_R", "ai_eyeIrisDown_L", "ai_eyeIrisDown_R",
    "ai_eyeIrisIn_L", "ai_eyeIrisIn_R", "ai_eyeIrisOut_L", "ai_eyeIrisOut_R", "ai_eyeIrisUp_L",
    "ai_eyeIrisUp_R", "ai_eyeLowerClose_25_L", "ai_eyeLowerClose_25_R", "ai_eyeLowerClose_50_L",
    "ai_eyeLowerClose_50_R", "ai_eyeLowerClose_75_L", "ai_eyeLowerClose_75_R", "ai_eyeLowerClose_L",
    "ai_eyeLowerClose_R", "ai_eyeLowerSmile_L", "ai_eyeLowerSmile_R", "ai_eyeLowerWide_L",
    "ai_eyeLowerWide_R", "ai_eyeOutUpperClose_L", "ai_eyeOutUpperClose_R", "ai_eyeUpperClose_25_L",
    "ai_eyeUpperClose_25_R", "ai_eyeUpperClose_50_L", "ai_eyeUpperClose_50_R", "ai_eyeUpperClose_75_L",
    "ai_eyeUpperClose_75_R", "ai_eyeUpperClose_L", "ai_eyeUpperClose_R", "ai_eyeUpperWide_L",
    "ai_eyeUpperWide_R",
};
constexpr std::string_view kTongue[] = {
    "ai_tongueDn", "ai_tongueLeft", "ai_tongueOut", "ai_tongueRaise", "ai_tongueRight", "ai_tongueUp",
    "ca_jawOpen",
};
constexpr std::string_view kNeutral[] = {"ai_neutral"};
constexpr std::string_view kJawOpen[] = {"ai_jawOpen"};
constexpr std::string_view kEyelashBrows[] = {"ai_browInnerIn_L", "ai_browInnerIn_R", "ai_browMidDown_L",
                                              "ai_browMidDown_R"};
constexpr std::string_view kTeeth[] = {"ca_teethLowerFlat", "ca_teethUpperFlat"};

// One group's row: the runs joined in order, less the names in `without`.
MorphTransferEntry Row(std::string sourceMesh, std::initializer_list<NameRun> runs,
                       std::initializer_list<std::string_view> without = {}) {
    MorphTransferEntry entry{std::move(sourceMesh), {}};
    for (NameRun run : runs)
        for (std::string_view name : run)
            if (std::find(without.begin(), without.end(), name) == without.end())
                entry.morphNames.emplace_back(name);
    return entry;
}
}  // namespace

// Some gaps are deliberate: the nose ring has no lower lip, dimple, lower roll or lower
// shrug; the mouth ring lacks ai_cheekSquint_L, ai_mouthDimple_L and ai_mouthRollLower; the
// brow ring is the brow list plus ai_neutral but feeds from the head mesh; the tongue ring
// is the inner mouth list less its two teeth shapes.
const std::unordered_map<std::string, MorphTransferEntry> MorphTransferTable = {
    {"head", Row("head", {kBrows, kCheeks, kMouth, kNeutral, kNose, kLipCorners, kEyes, kJawOpen})},
    {"headMouth", Row("headMouth", {kTongue, kTeeth})},
    {"brow", Row("brow", {kBrows})},
    {"eyelash", Row("eyelash", {kEyelashBrows, kEyes, kMouth, kNose})},
    {"facial_hair", Row("head", {kCheeks, kMouth, kNose, kJawOpen})},
    {"earring", Row("head", {kJawOpen})},
    {"nosering", Row("head", {kCheeks, kMouth, kNose, kJawOpen},
                     {"ai_lipLowerUp_C", "ai_lipLowerUp_L", "ai_lipLowerUp_R", "ai_lipLowerWide_L",
                      "ai_lipLowerWide_R", "ai_lipLower_C", "ai_lipLower_L", "ai_lipLower_R", "ai_mouthDimple_L",
                      "ai_mouthDimple_R", "ai_mouthRollLower", "ai_mouthShrugLower"})},
    {"mouthring", Row("head", {kCheeks, kMouth, kNose, kJawOpen},
                      {"ai_cheekSquint_L", "ai_mouthDimple_L", "ai_mouthRollLower"})},
    {"browring", Row("head", {kBrows, kNeutral})},
    {"tonguering", Row("headMouth", {kTongue})},
};

namespace {
const std::vector<std::string> kNoMorphNames;

// Tested in this order; the first prefix that matches wins.
constexpr std::array<std::string_view, 5> kNarrowedPrefixes = {
    "browring", "tonguering", "mouthring", "nosering", "earring",
};
}  // namespace

const std::vector<std::string>& MorphNamesForGroup(std::string name) {
    for (std::string_view prefix : kNarrowedPrefixes) {
        if (name.starts_with(prefix)) {
            name = prefix;
            break;
        }
    }
    auto row = MorphTransferTable.find(name);
    return row == MorphTransferTable.end() ? kNoMorphNames : row->second.morphNames;
}
