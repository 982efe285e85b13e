#pragma once

#include <cstdint>
#include <string>

struct BaseObject {
    std::string name;
    uint64_t id = 0;
};
