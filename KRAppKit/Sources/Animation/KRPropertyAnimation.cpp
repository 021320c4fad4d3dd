#include "Animation/KRPropertyAnimation.h"

#include <algorithm>
#include <utility>

KRAnimatableValue KRAnimatableValue::fromDouble(double value) {
    KRAnimatableValue result;
    result.components = {value, 0.0, 0.0, 0.0};
    result.count = 1;
    return result;
}

KRAnimatableValue KRAnimatableValue::fromPoint(KRPoint point) {
    KRAnimatableValue result;
    result.components = {point.x, point.y, 0.0, 0.0};
    result.count = 2;
    return result;
}

KRAnimatableValue KRAnimatableValue::fromSize(KRSize size) {
    KRAnimatableValue result;
    result.components = {size.width, size.height, 0.0, 0.0};
    result.count = 2;
    return result;
}

KRAnimatableValue KRAnimatableValue::fromColor(const QColor& color) {
    KRAnimatableValue result;
    result.count = 4;
    // No colour draws nothing: the same as transparent black.
    if (!color.isValid()) {
        return result;
    }
    const QColor rgb = color.toRgb();
    const double alpha = rgb.alphaF();
    result.components = {rgb.redF() * alpha, rgb.greenF() * alpha, rgb.blueF() * alpha, alpha};
    return result;
}

QColor KRAnimatableValue::toColor() const {
    const double alpha = std::clamp(components[3], 0.0, 1.0);
    if (alpha <= 0.0) {
        return QColor(0, 0, 0, 0);
    }
    const auto channel = [alpha](double premultiplied) {
        return static_cast<float>(std::clamp(premultiplied / alpha, 0.0, 1.0));
    };
    return QColor::fromRgbF(channel(components[0]), channel(components[1]), channel(components[2]),
                            static_cast<float>(alpha));
}

KRAnimatableValue KRAnimatableValue::interpolate(const KRAnimatableValue& from, const KRAnimatableValue& to,
                                                 double progress) {
    KRAnimatableValue result;
    result.count = std::max(from.count, to.count);
    for (std::size_t i = 0; i < result.components.size(); ++i) {
        result.components[i] = from.components[i] + (to.components[i] - from.components[i]) * progress;
    }
    return result;
}

KRPropertyAnimation::KRPropertyAnimation(KRAnimatableValue from, KRAnimatableValue to, double beginTime,
                                         EZSampledFunctionRef function,
                                         std::shared_ptr<KRAnimationGroup> group)
    : m_from(from), m_to(to), m_beginTime(beginTime), m_function(std::move(function)),
      m_group(std::move(group)) {
    if (m_group) {
        m_group->animationDidStart();
    }
}

KRPropertyAnimation& KRPropertyAnimation::operator=(KRPropertyAnimation&& other) noexcept {
    if (this != &other) {
        // The animation being overwritten is superseded: its group must hear of it, or it never completes.
        stop();
        m_from = other.m_from;
        m_to = other.m_to;
        m_beginTime = other.m_beginTime;
        m_function = std::move(other.m_function);
        // Moving the group out leaves the source unable to notify it a second time.
        m_group = std::move(other.m_group);
    }
    return *this;
}

KRPropertyAnimation::~KRPropertyAnimation() {
    stop();
}

double KRPropertyAnimation::duration() const {
    return m_function ? m_function->duration() : 0.0;
}

KRAnimatableValue KRPropertyAnimation::valueAtTime(double time) const {
    if (!m_function) {
        return m_to;
    }
    return KRAnimatableValue::interpolate(m_from, m_to, m_function->valueAtTime(time - m_beginTime));
}

bool KRPropertyAnimation::isFinishedAtTime(double time) const {
    return time - m_beginTime >= duration();
}

void KRPropertyAnimation::stop() {
    // Dropping the group is the stopped mark: a second stop, the destructor and a moved-from object all
    // find nothing to tell.
    if (const std::shared_ptr<KRAnimationGroup> group = std::exchange(m_group, nullptr)) {
        group->animationDidStop();
    }
}
