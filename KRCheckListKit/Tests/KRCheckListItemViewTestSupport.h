#pragma once

// Shared by the row tests: readable geometry in failure messages, a delegate that records every message
// with its arguments, and the colours a row's state is expected to turn into.

#include "KRCheckListDefaults.h"
#include "KRCheckListItemView.h"

#include "Controls/KRDefaults.h"
#include "Foundation/KRObject.h"
#include "Foundation/KRTrace.h"
#include "Geometry/KRGeometry.h"
#include "Views/KREvent.h"

#include <QString>
#include <QStringList>

#include <functional>
#include <memory>
#include <optional>
#include <ostream>
#include <utility>
#include <vector>

// Printers found by GoogleTest through argument-dependent lookup (the geometry types live in the global
// namespace).
inline void PrintTo(const KRPoint& point, std::ostream* os) {
    *os << KRStringFromPoint(point).toStdString();
}
inline void PrintTo(const KRSize& size, std::ostream* os) {
    *os << KRStringFromSize(size).toStdString();
}
inline void PrintTo(const KRRect& rect, std::ostream* os) {
    *os << KRStringFromRect(rect).toStdString();
}
inline void PrintTo(const KREdgeInsets& insets, std::ostream* os) {
    *os << "{top " << insets.top << ", left " << insets.left << ", bottom " << insets.bottom << ", right "
        << insets.right << "}";
}

namespace KRCheckListItemViewTesting {

// One message received by the recording delegate, with its arguments and what the row looked like then.
struct RecordedCall {
    QString method;
    KRCheckListItemView* itemView = nullptr;
    QString title;
    KRUInteger status = 0;
    KRTextView* textView = nullptr;
    KRTextField* textField = nullptr;
    KRView* view = nullptr;
    QString selector;
    bool proposed = false;
    std::optional<KREventType> eventType;
    // The row's state when the message arrived.
    bool rowHighlighted = false;
    double highlightAlpha = -1.0;
    bool rowUpdateScheduled = false;
    QColor shapeBackground;
};

// Records every message in order; every answer can be configured.
class RecordingItemViewDelegate : public KRObject, public KRCheckListItemViewDelegate {
public:
    QString checkListItemViewValidateChangedTitle(KRCheckListItemView* itemView,
                                                  const QString& title) override {
        RecordedCall& call = record(QStringLiteral("checkListItemViewValidateChangedTitle"), itemView);
        call.title = title;
        return titleValidator ? titleValidator(title) : title;
    }
    KRUInteger checkListItemViewValidateChangedStatus(KRCheckListItemView* itemView,
                                                      KRUInteger status) override {
        RecordedCall& call = record(QStringLiteral("checkListItemViewValidateChangedStatus"), itemView);
        call.status = status;
        return statusAnswer ? *statusAnswer : status;
    }
    bool checkListItemViewTextViewDoCommandBySelector(KRCheckListItemView* itemView, KRTextView* textView,
                                                      const KRSelector& selector) override {
        RecordedCall& call = record(QStringLiteral("checkListItemViewTextViewDoCommandBySelector"), itemView);
        call.textView = textView;
        call.selector = selector.name();
        return doCommandAnswer;
    }
    void checkListItemViewWillUpdate(KRCheckListItemView* itemView) override {
        record(QStringLiteral("checkListItemViewWillUpdate"), itemView);
    }
    void checkListItemViewDidUpdate(KRCheckListItemView* itemView) override {
        record(QStringLiteral("checkListItemViewDidUpdate"), itemView);
    }
    void checkListItemViewDidChangeSizeThatFits(KRCheckListItemView* itemView) override {
        record(QStringLiteral("checkListItemViewDidChangeSizeThatFits"), itemView);
    }
    void checkListItemViewDidEndEditingTitle(KRCheckListItemView* itemView) override {
        record(QStringLiteral("checkListItemViewDidEndEditingTitle"), itemView);
    }
    void checkListItemViewWillChangeHighlighted(KRCheckListItemView* itemView) override {
        record(QStringLiteral("checkListItemViewWillChangeHighlighted"), itemView);
    }
    void checkListItemViewDidChangeHighlighted(KRCheckListItemView* itemView) override {
        record(QStringLiteral("checkListItemViewDidChangeHighlighted"), itemView);
    }
    bool checkListItemViewMouseDownHandle(KRCheckListItemView* itemView, const KREvent& event) override {
        record(QStringLiteral("checkListItemViewMouseDownHandle"), itemView).eventType = event.type();
        return mouseDownHandleAnswer;
    }
    bool checkListItemViewMouseDraggedHandle(KRCheckListItemView* itemView, const KREvent& event) override {
        record(QStringLiteral("checkListItemViewMouseDraggedHandle"), itemView).eventType = event.type();
        return mouseDraggedHandleAnswer;
    }
    bool checkListItemViewMouseUpHandle(KRCheckListItemView* itemView, const KREvent& event) override {
        record(QStringLiteral("checkListItemViewMouseUpHandle"), itemView).eventType = event.type();
        return mouseUpHandleAnswer;
    }
    std::shared_ptr<KRTextView> checkListItemViewFieldEditorForView(KRCheckListItemView* itemView,
                                                                    KRView* view) override {
        record(QStringLiteral("checkListItemViewFieldEditorForView"), itemView).view = view;
        return fieldEditorAnswer;
    }
    bool checkListItemViewTextFieldValidateBecomeFirstResponder(KRCheckListItemView* itemView,
                                                                KRTextField* textField,
                                                                bool proposed) override {
        RecordedCall& call =
            record(QStringLiteral("checkListItemViewTextFieldValidateBecomeFirstResponder"), itemView);
        call.textField = textField;
        call.proposed = proposed;
        return becomeAnswer ? *becomeAnswer : proposed;
    }
    bool checkListItemViewTextFieldValidateResignFirstResponder(KRCheckListItemView* itemView,
                                                                KRTextField* textField,
                                                                bool proposed) override {
        RecordedCall& call =
            record(QStringLiteral("checkListItemViewTextFieldValidateResignFirstResponder"), itemView);
        call.textField = textField;
        call.proposed = proposed;
        return resignAnswer ? *resignAnswer : proposed;
    }

    QStringList methods() const {
        QStringList names;
        for (const RecordedCall& call : calls) {
            names << call.method;
        }
        return names;
    }
    int count(const QString& method) const { return static_cast<int>(methods().count(method)); }

    std::vector<RecordedCall> calls;
    std::function<QString(const QString&)> titleValidator;
    std::optional<KRUInteger> statusAnswer;
    bool doCommandAnswer = false;
    std::shared_ptr<KRTextView> fieldEditorAnswer;
    std::optional<bool> becomeAnswer;
    std::optional<bool> resignAnswer;
    bool mouseDownHandleAnswer = false;
    bool mouseDraggedHandleAnswer = false;
    bool mouseUpHandleAnswer = false;

private:
    RecordedCall& record(const QString& method, KRCheckListItemView* itemView) {
        RecordedCall call;
        call.method = method;
        call.itemView = itemView;
        if (itemView) {
            call.rowHighlighted = itemView->isHighlighted();
            call.highlightAlpha = itemView->highlightView()->alphaValue();
            call.rowUpdateScheduled = itemView->isUpdateScheduled();
            call.shapeBackground = itemView->shapeView()->backgroundColor();
        }
        calls.push_back(call);
        return calls.back();
    }
};

// Installs a trace sink for its lifetime and keeps every step with its object.
class TraceRecorder {
public:
    TraceRecorder() {
        KRTrace::setSink([this](const void* object, const char* step) {
            m_steps.emplace_back(object, QString::fromLatin1(step));
        });
    }
    ~TraceRecorder() { KRTrace::setSink({}); }
    TraceRecorder(const TraceRecorder&) = delete;
    TraceRecorder& operator=(const TraceRecorder&) = delete;

    QStringList stepsOf(const void* object) const {
        QStringList steps;
        for (const auto& [owner, step] : m_steps) {
            if (owner == object) {
                steps << step;
            }
        }
        return steps;
    }
    void clear() { m_steps.clear(); }

private:
    std::vector<std::pair<const void*, QString>> m_steps;
};

// The looks a row's state is expected to turn into.
inline QColor editedFillColor() {
    return KRDefaults::blendedColor(KRDefaults::whiteColor(), 0.1, KRDefaults::manateeGrayColor());
}
inline QColor editedBorderColor() {
    return KRDefaults::colorWithAlpha(KRDefaults::manateeGrayColor(), 0.1);
}
inline QColor selectedFillColor() {
    return KRDefaults::blendedColor(KRDefaults::whiteColor(), 0.35, KRDefaults::vantorBlue3Color());
}
inline QColor selectedBorderColor() {
    return KRDefaults::colorWithAlpha(KRDefaults::vantorBlue3Color(), 0.1);
}
inline QColor finishedColor() {
    return KRDefaults::colorWithAlpha(KRCheckListDefaults::defaultTextColor(), 0.5);
}

// A look no update ever produces, painted over a sub-view to see whether an update ran since.
inline QColor sentinelColor() {
    return QColor(12, 34, 56, 78);
}

} // namespace KRCheckListItemViewTesting
