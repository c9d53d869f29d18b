#pragma once

// Type ids of the motion library's persistent classes; part of the file format.
enum : unsigned short {
    kTypeIdSpline = 300,
    kTypeIdCatmullCurve = 301,
    kTypeId3DInterpolation = 302,
    kTypeIdVelocityBased = 303,
    kTypeIdInterpolation = 304,
};

// Registers the curves and paths with the type registry. Safe to call more than once.
void MotionRegisterTypes();
