// Component conversions shared by accessor and Draco attribute reading. All arithmetic is
// double precision; normalisation divides by the source's range and clamps signed values
// at -1.
// Private to the glTF library.
#pragma once

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <type_traits>

namespace gltfconvert {

template <typename S>
constexpr double Divisor() {
    if constexpr (std::is_same_v<S, int8_t>) return 127.0;
    else if constexpr (std::is_same_v<S, uint8_t>) return 255.0;
    else if constexpr (std::is_same_v<S, int16_t>) return 32767.0;
    else if constexpr (std::is_same_v<S, uint16_t>) return 65535.0;
    else if constexpr (std::is_same_v<S, int32_t>) return 2147483647.0;
    else if constexpr (std::is_same_v<S, uint32_t>) return 4294967295.0;
    else return 1.0;
}

// x / d for normalised input, with the lower clamp of signed integer sources.
template <typename S>
double Unit(S x) {
    double v;
    if constexpr (std::is_same_v<S, int64_t>) v = double(x) * 1.0842021724855044e-19;
    else if constexpr (std::is_same_v<S, uint64_t>) v = double(x) * 5.421010862427522e-20;
    else v = double(x) / Divisor<S>();
    if constexpr (std::is_integral_v<S> && std::is_signed_v<S>) v = std::max(v, -1.0);
    return v;
}

// A float cast to an integer target wraps through 64 bits; values with no integer meaning
// (NaN, beyond 64 bits) give 0 instead of undefined behaviour.
template <typename T>
T WrapFromDouble(double v) {
    if (!(v > -9.2e18 && v < 9.2e18)) return 0;
    return static_cast<T>(static_cast<uint64_t>(static_cast<int64_t>(v)));
}

template <typename T>
T ScaleToUnsigned(double unit) {
    constexpr double top = std::is_same_v<T, uint16_t> ? 65535.0 : 4294967295.0;
    double v = unit * top;
    if (!(v >= 0.0)) v = 0.0;  // NaN too
    if (v > top) v = top;
    return static_cast<T>(v);
}

template <typename T, typename S>
T Convert(S x, bool normalized) {
    if constexpr (std::is_same_v<T, S>) {
        return x;
    } else if constexpr (std::is_same_v<T, float>) {
        return normalized ? float(Unit(x)) : float(x);
    } else {
        if (normalized) return ScaleToUnsigned<T>(Unit(x));
        if constexpr (std::is_floating_point_v<S>) return WrapFromDouble<T>(double(x));
        else return static_cast<T>(x);
    }
}

}  // namespace gltfconvert
