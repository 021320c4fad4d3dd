#pragma once

#include "Animation/EZSampledFunction.h"

#include <QHash>
#include <QString>

// What an animation block configures: the curve of the implicit animations its changes start, in general
// and per animated key ("frameOrigin", "frameSize", "opacity", "backgroundColor", "borderColor",
// "shadowOpacity", "scale").
class EZAnimationContext {
public:
    explicit EZAnimationContext(bool animated = true);

    bool isAnimated() const { return m_animated; }
    void setAnimated(bool animated) { m_animated = animated; }

    EZSampledFunctionRef interpolationFunction() const { return m_interpolationFunction; }
    void setInterpolationFunction(EZSampledFunctionRef function) {
        m_interpolationFunction = std::move(function);
    }

    void setInterpolationFunctionForKey(const QString& key, EZSampledFunctionRef function);
    // The key's own curve when one was set, else the general one.
    EZSampledFunctionRef interpolationFunctionForKey(const QString& key) const;

private:
    bool m_animated;
    EZSampledFunctionRef m_interpolationFunction;
    QHash<QString, EZSampledFunctionRef> m_functionsByKey;
};
