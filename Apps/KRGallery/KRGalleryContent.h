#pragma once

#include "Foundation/KRRange.h"
#include "Text/KRTextField.h"
#include "Views/KRView.h"

#include <QColor>
#include <QFont>
#include <QString>

#include <memory>

// A line of text drawn with QPainter: enough for captions in the gallery.
class KRGalleryLabel : public KRView {
public:
    KRGalleryLabel(KRRect frame, QString text, double pointSize = 12.0, QColor color = QColor(40, 40, 48),
                   Qt::Alignment alignment = Qt::AlignLeft | Qt::AlignVCenter);

    void setText(const QString& text);
    void setBold(bool bold);
    void draw(QPainter& painter, KRRect dirtyRect) override;

private:
    QString m_text;
    QFont m_font;
    QColor m_color;
    Qt::Alignment m_alignment;
};

// The gallery's whole content view. Animations start as soon as it exists and keep going back and forth.
struct KRGalleryContent {
    std::shared_ptr<KRView> root;
    // How long one leg of the back-and-forth animation takes; half of it shows motion mid-way.
    double animationLegDuration = 0.0;
    // The field shown being edited once the content is in a window, and the selection it shows.
    std::shared_ptr<KRTextField> editedField;
    KRRange editedSelection;
};

KRGalleryContent KRMakeGalleryContent();
