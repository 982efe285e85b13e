// Records handed from the driver to loaders, post-processing and writers.
#pragma once

#include <cstdint>
#include <set>
#include <string>

struct DracoOptions {
    int32_t encodeSpeed = 0;
    int32_t decodeSpeed = 0;
    int32_t positionBits = 11;
    int32_t normalBits = 8;
    int32_t colorBits = 8;
    int32_t texcoordBits = 10;
    int32_t genericBits = 8;
};

struct ConversionOptions {
    float animationStart = 0.0f;   // seconds
    float animationEnd = -1.0f;    // seconds; -1 means to the end of the take
    float positionTolerance = 0.0f;  // percent
    float rotationTolerance = 0.0f;
    float scaleTolerance = 0.0f;
    bool cubicCurves = false;
    float keyframeInterval = 0.0f;  // seconds; 0 keeps the source keys
    bool convertCameras = false;
    bool convertLights = false;
    DracoOptions draco;
};

inline constexpr const char* kVurlVersion = "1.2.2";

// What one output file holds.
struct ExportOptions {
    std::string version = kVurlVersion;
    bool exportModel = false;
    bool exportMaterials = false;
    std::set<std::string> animations;  // take names; empty means no animation content
    bool exportMetadata = false;
    bool prettyPrint = false;
    bool exportSceneMetadata = false;
};
