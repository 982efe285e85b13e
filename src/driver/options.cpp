#include "driver/options.h"

#include <cerrno>
#include <cstdlib>
#include <stdexcept>

namespace {

bool Contains(const Args& args, const std::string& name) {
    for (const auto& a : args)
        if (a == name) return true;
    return false;
}

// The token after the first occurrence of name, if that occurrence is not last.
bool ValueAfter(const Args& args, const std::string& name, std::string& value) {
    for (size_t i = 0; i < args.size(); ++i) {
        if (args[i] != name) continue;
        if (i + 1 >= args.size()) return false;
        value = args[i + 1];
        return true;
    }
    return false;
}

std::string OptionValue(const Args& args, const std::string& longName, const std::string& shortName) {
    std::string value;
    if (ValueAfter(args, longName, value)) return value;
    if (ValueAfter(args, shortName, value)) return value;
    return std::string();
}

}  // namespace

bool HasOption(const Args& args, const std::string& longName, const std::string& shortName) {
    return Contains(args, longName) || Contains(args, shortName);
}

void GetStringOption(std::string& destination, const Args& args, const std::string& longName,
                     const std::string& shortName) {
    if (!HasOption(args, longName, shortName)) return;
    destination = OptionValue(args, longName, shortName);
}

float ParseFloatText(const std::string& text) {
    const char* begin = text.c_str();
    char* end = nullptr;
    errno = 0;
    float value = std::strtof(begin, &end);
    if (end == begin) throw std::invalid_argument("invalid stof argument");
    if (errno == ERANGE) throw std::out_of_range("stof argument out of range");
    return value;
}

void GetFloatOption(float& destination, const Args& args, const std::string& longName,
                    const std::string& shortName) {
    if (!HasOption(args, longName, shortName)) return;
    std::string text = OptionValue(args, longName, shortName);
    destination = text.empty() ? 0.0f : ParseFloatText(text);
}

void GetIntOption(int32_t& destination, const Args& args, const std::string& longName,
                  const std::string& shortName) {
    if (!HasOption(args, longName, shortName)) return;
    // atoi is strtol truncated to int; spelt out so that an overlong number wraps instead of being undefined.
    destination = static_cast<int32_t>(std::strtol(OptionValue(args, longName, shortName).c_str(), nullptr, 10));
}

void GetBoolOption(bool& destination, const Args& args, const std::string& longName,
                   const std::string& shortName) {
    if (!HasOption(args, longName, shortName)) return;
    destination = OptionValue(args, longName, shortName) == "true";
}
