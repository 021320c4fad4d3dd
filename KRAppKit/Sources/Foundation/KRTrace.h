#pragma once

#include <functional>

// Named steps of an object's life (set-up and tear-down steps, mostly), reported to one sink while one is
// installed. Nothing is recorded otherwise, so a step costs one test of a pointer. Tests install a sink to
// check the order of the steps.
class KRTrace {
public:
    using Sink = std::function<void(const void* object, const char* step)>;

    static void step(const void* object, const char* step) {
        if (s_sink) {
            (*s_sink)(object, step);
        }
    }
    // Replaces the sink; an empty function removes it.
    static void setSink(Sink sink);

private:
    static Sink* s_sink;
};
