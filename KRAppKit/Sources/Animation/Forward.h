#pragma once

// Forward declarations of this module's types, for headers that only name them.
class EZAnimationContext;
class EZInterpolationFunctions;
class EZSampledFunction;
class KRAnimatable;
class KRAnimationEngine;
class KRAnimationGroup;
class KRAnimationTransaction;
struct KRAnimatableValue;
class KRPropertyAnimation;
