// Command-line lookups: every option is searched for by name when it is needed;
// the argument list is never consumed or reordered.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

using Args = std::vector<std::string>;

bool HasOption(const Args& args, const std::string& longName, const std::string& shortName);

// Each getter leaves the destination untouched when the option is absent.
void GetStringOption(std::string& destination, const Args& args, const std::string& longName,
                     const std::string& shortName);
// Throws std::invalid_argument / std::out_of_range for unparsable text, like stof.
void GetFloatOption(float& destination, const Args& args, const std::string& longName,
                    const std::string& shortName);
// atoi semantics: junk or empty text gives 0.
void GetIntOption(int32_t& destination, const Args& args, const std::string& longName,
                  const std::string& shortName);
// True only for the exact text "true".
void GetBoolOption(bool& destination, const Args& args, const std::string& longName,
                   const std::string& shortName);

// The standard string-to-float conversion with its two exceptions.
float ParseFloatText(const std::string& text);
