#include "Views/KRTrackingArea.h"

#include "Views/KRResponder.h"

#include <utility>

KRTrackingArea::KRTrackingArea(KRRect rect, unsigned options, KRResponder* owner, QVariantMap userInfo)
    : m_rect(rect), m_options(options), m_owner(owner), m_userInfo(std::move(userInfo)) {}
