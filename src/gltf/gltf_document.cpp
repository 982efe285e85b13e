#include "gltf/gltf_document.h"

uint32_t ComponentSize(ComponentType type) {
    switch (type) {
        case ComponentType::BYTE:
        case ComponentType::UNSIGNED_BYTE: return 1;
        case ComponentType::SHORT:
        case ComponentType::UNSIGNED_SHORT: return 2;
        case ComponentType::INT:
        case ComponentType::UNSIGNED_INT:
        case ComponentType::FLOAT: return 4;
    }
    return 0;
}

uint32_t ElementComponents(ElementType type) {
    switch (type) {
        case ElementType::SCALAR: return 1;
        case ElementType::VEC2: return 2;
        case ElementType::VEC3: return 3;
        case ElementType::VEC4:
        case ElementType::MAT2: return 4;
        case ElementType::MAT3: return 9;
        case ElementType::MAT4: return 16;
    }
    return 0;
}
