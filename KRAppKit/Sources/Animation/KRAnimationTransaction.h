#pragma once

#include "Animation/EZAnimationContext.h"
#include "Animation/KRAnimationGroup.h"

#include <functional>
#include <memory>

// The stack of open animation blocks. Property setters ask it whether, and along which curve, a change of
// one of their keys is to animate.
class KRAnimationTransaction {
public:
    // Runs animations with a fresh context (animated or not) pushed; the default curve is ease-in-out over
    // 0.25 s times KRAnimationDurationMultiplier. completion runs once all animations the block started
    // have finished (at once when it started none).
    static void perform(bool animated, const std::function<void(EZAnimationContext&)>& animations,
                        std::function<void()> completion = {});
    // Changes made inside happen at once, even inside an animated block.
    static void performWithoutAnimation(const std::function<void()>& block);
    // performWithoutAnimation when nonAnimated is true; otherwise just runs block.
    static void performNonAnimated(bool nonAnimated, const std::function<void()>& block);

    // The curve a change of key should animate along now, or null when it should take effect at once
    // (no animated block open, a non-animated block innermost, or a zero duration).
    static EZSampledFunctionRef functionForKey(const char* key);
    // The group of the innermost animated block (null outside one).
    static std::shared_ptr<KRAnimationGroup> currentGroup();
    static int depth();
};
