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

// How far the triangles of b are from those of a, in any order, corners in the same cyclic
// order: over b's triangles, the best match's largest corner difference in position over
// posTol and in UV set uvSet (none when negative) over uvTol. At most 1: every triangle
// of b has a match within the tolerances; infinite when the counts differ.
double TriangleMismatch(const VertexData& a, const std::vector<uint32_t>& aIndices, const VertexData& b,
                        const std::vector<uint32_t>& bIndices, double posTol, int uvSet = -1, double uvTol = 1);
