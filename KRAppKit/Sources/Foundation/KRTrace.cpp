#include "Foundation/KRTrace.h"

KRTrace::Sink* KRTrace::s_sink = nullptr;

void KRTrace::setSink(Sink sink) {
    static Sink installed;
    installed = std::move(sink);
    s_sink = installed ? &installed : nullptr;
}
