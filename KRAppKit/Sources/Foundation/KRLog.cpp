#include "Foundation/KRLog.h"

#include <cstdio>
#include <mutex>

namespace {

std::mutex& logMutex() {
    static std::mutex mutex;
    return mutex;
}

KRLogCapture*& innermostCapture() {
    static KRLogCapture* capture = nullptr;
    return capture;
}

} // namespace

void KRLog(const QString& message) {
    std::lock_guard<std::mutex> lock(logMutex());
    if (KRLogCapture* capture = innermostCapture()) {
        capture->m_lines.append(message);
        return;
    }
    // One write per line so concurrent lines do not interleave.
    const QByteArray line = message.toUtf8() + '\n';
    std::fwrite(line.constData(), 1, static_cast<std::size_t>(line.size()), stderr);
    std::fflush(stderr);
}

KRLogCapture::KRLogCapture() {
    std::lock_guard<std::mutex> lock(logMutex());
    m_previous = innermostCapture();
    innermostCapture() = this;
}

KRLogCapture::~KRLogCapture() {
    std::lock_guard<std::mutex> lock(logMutex());
    KRLogCapture*& innermost = innermostCapture();
    if (innermost == this) {
        innermost = m_previous;
        return;
    }
    // Destroyed out of stack order: unlink from the middle of the chain.
    for (KRLogCapture* capture = innermost; capture; capture = capture->m_previous) {
        if (capture->m_previous == this) {
            capture->m_previous = m_previous;
            return;
        }
    }
}
