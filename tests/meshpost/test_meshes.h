// Small meshes and scenes for the mesh post-processing tests.
#pragma once

#include <cstdint>
#include <vector>

#include "scene/scene.h"

// An indexed mesh instance whose records the scene owns; no geometry holds it.
MeshInstance* MakeInstance(Scene& scene, VertexData data, std::vector<uint32_t> indices);

// Unit cube centred on the origin, one flat quad per face: 24 vertices, 12 triangles, normals.
void MakeCube(VertexData& data, std::vector<uint32_t>& indices, float size = 1.0f);
// Open cylinder of radius 0.5 and height 1 with smooth normals around `segments` sides.
void MakeCylinder(VertexData& data, std::vector<uint32_t>& indices, uint32_t segments);
// Gently curved grid of n x n quads over the unit square, normals up.
void MakeGrid(VertexData& data, std::vector<uint32_t>& indices, uint32_t n);

// Summed world-space area of the instance's triangles, and summed area of their corners in
// UV set `set`.
double WorldArea(const MeshInstance& mi);
double UvArea(const MeshInstance& mi, int set);

Mat4 ScaleMatrix(float sx, float sy, float sz);

// How far the triangles of b are from those of a, in any order, corners in the same cyclic
// order: over b's triangles, the best match's largest corner difference in position over
// posTol and in UV set uvSet (none when negative) over uvTol. At most 1: every triangle
// of b has a match within the tolerances; infinite when the counts differ.
double TriangleMismatch(const VertexData& a, const std::vector<uint32_t>& aIndices, const VertexData& b,
                        const std::vector<uint32_t>& bIndices, double posTol, int uvSet = -1, double uvTol = 1);
