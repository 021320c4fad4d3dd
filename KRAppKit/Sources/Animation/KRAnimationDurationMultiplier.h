#pragma once

// A global factor on every animation duration (0 makes every animation finish at once; larger values
// slow everything down for inspection).
extern double KRAnimationDurationMultiplier;
