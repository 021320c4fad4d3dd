#pragma once

#include "Foundation/KRObject.h"
#include "Geometry/KRGeometry.h"

#include <QVariantMap>

class KRResponder;

enum KRTrackingAreaOptions : unsigned {
    KRTrackingMouseEnteredAndExited = 0x01,
    KRTrackingMouseMoved = 0x02,
    KRTrackingCursorUpdate = 0x04,
    KRTrackingActiveWhenFirstResponder = 0x10,
    KRTrackingActiveInKeyWindow = 0x20,
    KRTrackingActiveInActiveApp = 0x40,
    KRTrackingActiveAlways = 0x80,
    KRTrackingInVisibleRect = 0x200,
};

// A region of a view (in the view's coordinates) that reports the pointer to its owner. A plain value-like
// object: nothing observes it or refers to it weakly, and every row holds a few.
class KRTrackingArea {
public:
    KRTrackingArea(KRRect rect, unsigned options, KRResponder* owner, QVariantMap userInfo = {});
    KRTrackingArea(const KRTrackingArea&) = delete;
    KRTrackingArea& operator=(const KRTrackingArea&) = delete;

    KRRect rect() const { return m_rect; }
    unsigned options() const { return m_options; }
    // Null once the owning view is gone. An owner that is not the view holding the area must outlive it.
    KRResponder* owner() const { return m_owner; }
    const QVariantMap& userInfo() const { return m_userInfo; }

private:
    friend class KRView;
    void ownerWillBeDestroyed(const KRResponder* owner) {
        if (m_owner == owner) {
            m_owner = nullptr;
        }
    }

    KRRect m_rect;
    unsigned m_options;
    KRResponder* m_owner;
    QVariantMap m_userInfo;
};
