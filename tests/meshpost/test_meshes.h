// Small meshes for the mesh post-processing tests.
#pragma once

#include <cstdint>
#include <vector>

#include "scene/geometry.h"

struct TestMesh {
    VertexData data;
    std::vector<uint32_t> indices;
};

// Cube centred on the origin, one flat quad per face: 24 vertices, 12 triangles, normals.
TestMesh CubeMesh(float size = 1.0f);
// Open cylinder of radius 0.5 and height 1 with smooth normals around `segments` sides.
TestMesh CylinderMesh(uint32_t segments);
// Gently curved grid of n x n quads over the unit square, normals up.
TestMesh GridMesh(uint32_t n);

// Over b's triangles, the largest corner difference (position over posTol, UV set uvSet
// over uvTol unless negative) to the best-matching triangle of a, in any order with
// corners in the same cyclic order: at most 1 when every one matches; infinite when the
// counts differ.
double TriangleMismatch(const VertexData& a, const std::vector<uint32_t>& aIndices, const VertexData& b,
                        const std::vector<uint32_t>& bIndices, double posTol, int uvSet = -1, double uvTol = 1);
