#pragma once

// Registers the persistent classes of the animation set (type ids 1 to 21) with the
// type registry. Safe to call more than once.
void AnimationSetRegisterTypes();
