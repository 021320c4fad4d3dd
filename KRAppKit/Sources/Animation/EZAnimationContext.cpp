#include "Animation/EZAnimationContext.h"

#include "Animation/EZInterpolationFunctions.h"
#include "Animation/KRAnimationDurationMultiplier.h"

EZAnimationContext::EZAnimationContext(bool animated)
    : m_animated(animated), m_interpolationFunction(EZInterpolationFunctions::easeInOutWithDuration(
                                0.25 * KRAnimationDurationMultiplier)) {}

void EZAnimationContext::setInterpolationFunctionForKey(const QString& key, EZSampledFunctionRef function) {
    // Clearing a key's curve falls back to the general one.
    if (!function) {
        m_functionsByKey.remove(key);
        return;
    }
    m_functionsByKey.insert(key, std::move(function));
}

EZSampledFunctionRef EZAnimationContext::interpolationFunctionForKey(const QString& key) const {
    const auto it = m_functionsByKey.constFind(key);
    return it != m_functionsByKey.constEnd() ? it.value() : m_interpolationFunction;
}
