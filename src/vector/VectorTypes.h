#pragma once

// Registers the persistent classes of the vector library (pens, drawings).
void VectorRegisterTypes();
