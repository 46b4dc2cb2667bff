#pragma once

namespace teskal {

struct Camera {
    float fieldOfView = 60.0f; // vertical, degrees
    float zNear = 1.0f;
    float zFar = 100.0f;
    bool ortografica = false;
    float orthographicScale = 1.0f;
};

} // namespace teskal
