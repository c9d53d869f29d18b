#pragma once

// Registers the persistent classes of the vector library: pens, drawings and side colours.
void VectorRegisterTypes();
