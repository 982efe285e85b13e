// Small meshes and scenes for the mesh post-processing tests.
#pragma once

#include <cstdint>
#include <vector>

#include "scene/scene.h"

// Owns the records that a test's mesh instances point at (the scene model leaves that to
// its teardown, which tests of single functions do not have).
struct MeshOwner {
    std::vector<VertexData*> vertexData;
    std::vector<std::vector<uint32_t>*> indexLists;
    std::vector<MeshInstance*> instances;
    ~MeshOwner();
    MeshInstance* Make(VertexData data, std::vector<uint32_t> indices);
    // Takes over records that an unwrap step put in place of the originals.
    void Adopt(MeshInstance* instance);
};

// Unit cube centred on the origin, one flat quad per face: 24 vertices, 12 triangles, normals.
void MakeCube(VertexData& data, std::vector<uint32_t>& indices, float size = 1.0f);
// Open cylinder of radius 0.5 and height 1 with smooth normals around `segments` sides.
void MakeCylinder(VertexData& data, std::vector<uint32_t>& indices, uint32_t segments);
// Gently curved grid of n x n quads over the unit square, normals up.
void MakeGrid(VertexData& data, std::vector<uint32_t>& indices, uint32_t n);

// World-space area of triangle t of an indexed list.
double TriangleArea3(const std::vector<float>& positions, const std::vector<uint32_t>& indices, size_t t);
// Signed area of triangle t in a UV set, after scaling u by `su` and v by `sv`.
double TriangleAreaUv(const std::vector<float>& uv, const std::vector<uint32_t>& indices, size_t t, double su,
                      double sv);

// Rasterises the UV triangles of all lists into a w x h grid at texel centres and returns
// the number of texels that more than one triangle covers (strict insides only, so edges
// shared inside one chart do not count).
size_t OverlappingTexels(const std::vector<const std::vector<float>*>& uvSets,
                         const std::vector<const std::vector<uint32_t>*>& indexLists, uint32_t w, uint32_t h);

Mat4 ScaleMatrix(float sx, float sy, float sz);
