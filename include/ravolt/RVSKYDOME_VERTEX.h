#pragma once

#include "ravolt/Z3MVECTOR2D.h"
#include "ravolt/Z3MVECTOR3D.h"
#include "ravolt/api.h"

// One vertex as the vertex buffer of a sky has it, in 20 bytes.
struct RV_API RVSKYDOME_VERTEX {
    RVSKYDOME_VERTEX() {}
    RVSKYDOME_VERTEX(const RVSKYDOME_VERTEX &) = default;
    RVSKYDOME_VERTEX &operator=(const RVSKYDOME_VERTEX &) = default;

    // Set the two parts.
    void setPosition(float x, float y, float z) { position = Z3MVECTOR3D(x, y, z); }
    void setTexCoord(float u, float v) { texCoord = Z3MVECTOR2D(u, v); }

    // In units of the scene, and from 0 to 1 across the texture.
    Z3MVECTOR3D position;
    Z3MVECTOR2D texCoord;
};
