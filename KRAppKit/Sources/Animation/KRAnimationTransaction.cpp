#include "Animation/KRAnimationTransaction.h"

#include "Animation/EZInterpolationFunctions.h"
#include "Animation/KRAnimationDurationMultiplier.h"

#include <utility>
#include <vector>

namespace {

struct Frame {
    // Owned through a pointer: nested blocks grow the stack while outer blocks hold references.
    std::unique_ptr<EZAnimationContext> context;
    std::shared_ptr<KRAnimationGroup> group;
    bool nonAnimated = false;
};

std::vector<Frame>& frames() {
    static std::vector<Frame> stack;
    return stack;
}

// Pops the frame it pushed, also when the block throws.
class FrameScope {
public:
    explicit FrameScope(Frame frame) { frames().push_back(std::move(frame)); }
    ~FrameScope() { frames().pop_back(); }
    FrameScope(const FrameScope&) = delete;
    FrameScope& operator=(const FrameScope&) = delete;
    EZAnimationContext& context() { return *frames().back().context; }
};

bool frameAnimates(const Frame& frame) {
    return !frame.nonAnimated && frame.context && frame.context->isAnimated();
}

} // namespace

void KRAnimationTransaction::perform(bool animated,
                                     const std::function<void(EZAnimationContext&)>& animations,
                                     std::function<void()> completion) {
    auto context = std::make_unique<EZAnimationContext>(animated);
    context->setInterpolationFunction(
        EZInterpolationFunctions::easeInOutWithDuration(0.25 * KRAnimationDurationMultiplier));
    auto group = std::make_shared<KRAnimationGroup>(std::move(completion));
    {
        FrameScope scope(Frame{std::move(context), group, !animated});
        if (animations) {
            animations(scope.context());
        }
    }
    // Closed after the pop, so a completion that opens a new block sees a clean stack.
    group->close();
}

void KRAnimationTransaction::performWithoutAnimation(const std::function<void()>& block) {
    FrameScope scope(Frame{std::make_unique<EZAnimationContext>(false), nullptr, true});
    if (block) {
        block();
    }
}

void KRAnimationTransaction::performNonAnimated(bool nonAnimated, const std::function<void()>& block) {
    if (nonAnimated) {
        performWithoutAnimation(block);
    } else if (block) {
        block();
    }
}

EZSampledFunctionRef KRAnimationTransaction::functionForKey(const char* key) {
    const auto& stack = frames();
    if (stack.empty() || !frameAnimates(stack.back())) {
        return nullptr;
    }
    EZSampledFunctionRef function = stack.back().context->interpolationFunctionForKey(QString::fromUtf8(key));
    if (!function || !(function->duration() > 0.0)) {
        return nullptr;
    }
    return function;
}

std::shared_ptr<KRAnimationGroup> KRAnimationTransaction::currentGroup() {
    const auto& stack = frames();
    if (stack.empty() || !frameAnimates(stack.back())) {
        return nullptr;
    }
    return stack.back().group;
}

int KRAnimationTransaction::depth() {
    return static_cast<int>(frames().size());
}
