// Outcome of an FBX layer operation: a code and a text. The layer throws
// nothing; an object that fails keeps one of these and returns false.
#pragma once

#include <string>

enum FbxStatusCode : int {
    kFbxSuccess = 0,
    kFbxFailure = 1,
    kFbxInsufficientMemory = 2,
    kFbxInvalidParameter = 3,
    kFbxIndexOutOfRange = 4,
    kFbxPasswordError = 5,
    kFbxInvalidFileVersion = 6,
    kFbxInvalidFile = 7,
    kFbxMalformedScene = 8,
};

class FbxStatus {
public:
    FbxStatus() = default;
    explicit FbxStatus(FbxStatusCode code) { SetCode(code); }
    FbxStatus(FbxStatusCode code, std::string text) { SetCode(code, std::move(text)); }

    FbxStatusCode GetCode() const { return code_; }
    const std::string& GetErrorString() const { return text_; }
    bool Error() const { return code_ != kFbxSuccess; }

    // The code with its default text.
    void SetCode(FbxStatusCode code) {
        code_ = code;
        text_ = DefaultText(code);
    }
    void SetCode(FbxStatusCode code, std::string text) {
        code_ = code;
        text_ = std::move(text);
    }
    void Clear() { SetCode(kFbxSuccess); }

    static const char* DefaultText(FbxStatusCode code) {
        switch (code) {
        case kFbxSuccess: return "Success";
        case kFbxFailure: return "Unknown error";
        case kFbxInsufficientMemory: return "Insufficient memory";
        case kFbxInvalidParameter: return "Invalid parameter";
        case kFbxIndexOutOfRange: return "Index out of range";
        case kFbxPasswordError: return "Invalid password";
        case kFbxInvalidFileVersion: return "Unsupported file version";
        case kFbxInvalidFile: return "Invalid file";
        case kFbxMalformedScene: return "Malformed scene";
        }
        return "Unknown error";
    }

    bool operator==(const FbxStatus& other) const { return code_ == other.code_ && text_ == other.text_; }

private:
    FbxStatusCode code_ = kFbxSuccess;
    std::string text_ = "Success";
};
