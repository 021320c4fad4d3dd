#include "KRGalleryContent.h"

#include "KRCheckListDefaults.h"
#include "KRCheckListItemView.h"

#include "Animation/EZInterpolationFunctions.h"
#include "Controls/KRButtonView.h"
#include "Controls/KRDefaults.h"
#include "Controls/KRImage.h"
#include "Foundation/KRRunLoop.h"
#include "Text/KRTextField.h"
#include "Views/KREvent.h"

#include <QPainter>
#include <QPainterPath>

#include <cmath>
#include <functional>
#include <numbers>
#include <utility>
#include <vector>

namespace {

constexpr double kContentWidth = 880.0;
constexpr double kMargin = 32.0;
constexpr double kLegDuration = 1.2;

const QColor kPageColor(246, 246, 249);
const QColor kInk(40, 40, 48);
const QColor kSecondaryInk(120, 120, 132);
const QColor kAccent(46, 120, 235);
const QColor kCoral(240, 96, 84);
const QColor kMint(60, 190, 150);
const QColor kTileBorder(222, 222, 230);

// --- Template images, drawn in code at 1x and 2x -------------------------------------------------------

enum class Glyph { StarOutline, StarFilled, Check };

QPainterPath starPath(double size) {
    QPainterPath path;
    const double centre = size / 2.0;
    const double outer = size * 0.46;
    const double inner = outer * 0.45;
    for (int i = 0; i < 10; ++i) {
        const double radius = (i % 2 == 0) ? outer : inner;
        const double angle = -std::numbers::pi / 2.0 + i * std::numbers::pi / 5.0;
        const QPointF point(centre + radius * std::cos(angle), centre + radius * std::sin(angle));
        if (i == 0) {
            path.moveTo(point);
        } else {
            path.lineTo(point);
        }
    }
    path.closeSubpath();
    return path;
}

QImage drawGlyph(Glyph glyph, double points, double scale) {
    const int pixels = static_cast<int>(std::lround(points * scale));
    QImage image(pixels, pixels, QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::transparent);
    QPainter painter(&image);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.scale(scale, scale);
    // Only the alpha channel of a template image counts.
    const QColor ink = Qt::black;
    switch (glyph) {
    case Glyph::StarOutline:
        painter.setPen(QPen(ink, 2.0, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
        painter.drawPath(starPath(points));
        break;
    case Glyph::StarFilled:
        painter.setPen(Qt::NoPen);
        painter.setBrush(ink);
        painter.drawPath(starPath(points));
        break;
    case Glyph::Check: {
        painter.setPen(QPen(ink, 2.0));
        painter.drawEllipse(QRectF(2, 2, points - 4, points - 4));
        QPainterPath tick;
        tick.moveTo(points * 0.3, points * 0.52);
        tick.lineTo(points * 0.45, points * 0.66);
        tick.lineTo(points * 0.72, points * 0.36);
        painter.setPen(QPen(ink, 2.4, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
        painter.drawPath(tick);
        break;
    }
    }
    return image;
}

std::shared_ptr<KRImage> templateImage(Glyph glyph) {
    constexpr double points = 28.0;
    return KRImage::imageWithRepresentations(
        {{drawGlyph(glyph, points, 1.0), 1.0}, {drawGlyph(glyph, points, 2.0), 2.0}}, true);
}

// --- Building blocks -----------------------------------------------------------------------------------

std::shared_ptr<KRView> makeBox(KRRect frame, const QColor& color, double cornerRadius = 0.0) {
    auto view = std::make_shared<KRView>(frame);
    view->setBackgroundColor(color);
    view->setCornerRadius(cornerRadius);
    return view;
}

std::shared_ptr<KRGalleryLabel> addLabel(KRView& parent, KRRect frame, const QString& text,
                                         double size = 12.0, const QColor& color = kSecondaryInk,
                                         Qt::Alignment alignment = Qt::AlignLeft | Qt::AlignVCenter) {
    auto label = std::make_shared<KRGalleryLabel>(frame, text, size, color, alignment);
    parent.addSubview(label);
    return label;
}

double addSectionTitle(KRView& root, double y, const QString& title, const QString& subtitle) {
    auto heading = addLabel(root, KRRectMake(kMargin, y, 600, 24), title, 17.0, kInk);
    heading->setBold(true);
    addLabel(root, KRRectMake(kMargin, y + 24, 760, 18), subtitle, 12.0);
    return y + 54;
}

// A white tile holding one button, captioned below.
std::shared_ptr<KRButtonView> addButtonTile(KRView& root, double x, double y, const QString& caption) {
    auto tile = makeBox(KRRectMake(x, y, 84, 84), Qt::white, 14);
    tile->setBorderColor(kTileBorder);
    tile->setBorderWidth(1);
    root.addSubview(tile);

    auto button = std::make_shared<KRButtonView>(KRRectMake(10, 10, 64, 64));
    button->setImage(templateImage(Glyph::StarOutline));
    button->setPressedImage(templateImage(Glyph::StarFilled));
    button->setImageColor(kInk);
    button->setIgnoresImageAlpha(false);
    button->setImageAlpha(0.55);
    button->setImageAlphaWhenHovered(0.8);
    button->setImageAlphaWhenPressed(1.0);
    button->setImageAlphaWhenHighlighted(1.0);
    button->setOuterScaleOnPress(0.85);
    tile->addSubview(button);

    addLabel(root, KRRectMake(x - 8, y + 90, 100, 18), caption, 12.0, kSecondaryInk, Qt::AlignCenter);
    return button;
}

double addButtons(KRView& root, double y) {
    y = addSectionTitle(
        root, y, QStringLiteral("Buttons"),
        QStringLiteral("KRButtonView in each state, with template images drawn in code and tinted."));
    const double step = 108.0;
    double x = kMargin;

    addButtonTile(root, x, y, QStringLiteral("Normal"));
    x += step;

    auto hovered = addButtonTile(root, x, y, QStringLiteral("Hovered"));
    hovered->mouseEntered(
        KREvent::trackingEvent(KREventType::MouseEntered, KRPointMake(32, 32), nullptr, 0, nullptr));
    x += step;

    auto pressed = addButtonTile(root, x, y, QStringLiteral("Pressed"));
    const KRPoint pressPoint = pressed->convertPointToView(KRPointMake(32, 32), nullptr);
    pressed->mouseDown(KREvent::mouseEvent(KREventType::LeftMouseDown, pressPoint, 0, nullptr));
    x += step;

    auto highlighted = addButtonTile(root, x, y, QStringLiteral("Highlighted"));
    highlighted->setImageColor(kAccent);
    highlighted->setHighlighted(true);
    x += step;

    auto disabled = addButtonTile(root, x, y, QStringLiteral("Disabled"));
    disabled->setEnabled(false);
    disabled->setAlphaValue(0.35);
    x += step;

    auto tinted = addButtonTile(root, x, y, QStringLiteral("Tinted"));
    tinted->setImage(templateImage(Glyph::Check));
    tinted->setImageColor(kMint);
    tinted->setImageAlpha(1.0);
    x += step;

    auto coral = addButtonTile(root, x, y, QStringLiteral("Tinted (coral)"));
    coral->setImage(templateImage(Glyph::StarFilled));
    coral->setImageColor(kCoral);
    coral->setImageAlpha(1.0);

    return y + 130;
}

// Moves the square across its track and back forever: the frame on a spring, the colour ease-in-out.
void runSquareLeg(const std::weak_ptr<KRView>& weakSquare, bool forward) {
    const std::shared_ptr<KRView> square = weakSquare.lock();
    if (!square) {
        return;
    }
    KRView::performAnimated(
        true,
        [&](EZAnimationContext& context) {
            context.setInterpolationFunction(EZInterpolationFunctions::easeInOutWithDuration(kLegDuration));
            context.setInterpolationFunctionForKey(
                QStringLiteral("frameOrigin"),
                EZInterpolationFunctions::springWithDampingRatio(0.55, kLegDuration));
            square->setFrameOrigin(KRPointMake(forward ? 340.0 : 14.0, square->frame().origin.y));
            square->setBackgroundColor(forward ? kCoral : kAccent);
            square->setCornerRadius(forward ? 24.0 : 10.0);
        },
        [weakSquare, forward] {
            // Restarts on a later turn, outside the engine's tick that ran this completion.
            KRRunLoop::main().performAfterDelay(
                0.0, [weakSquare, forward] { runSquareLeg(weakSquare, !forward); });
        });
}

// Shrinks and fades a dot and brings it back, forever.
void runPulse(const std::weak_ptr<KRView>& weakDot, bool shrink) {
    const std::shared_ptr<KRView> dot = weakDot.lock();
    if (!dot) {
        return;
    }
    KRView::performAnimated(
        true,
        [&](EZAnimationContext& context) {
            context.setInterpolationFunction(EZInterpolationFunctions::easeInOutWithDuration(kLegDuration));
            dot->setScale(shrink ? 0.55 : 1.0);
            dot->setAlphaValue(shrink ? 0.35 : 1.0);
        },
        [weakDot, shrink] {
            KRRunLoop::main().performAfterDelay(0.0, [weakDot, shrink] { runPulse(weakDot, !shrink); });
        });
}

double addAnimations(KRView& root, double y) {
    y = addSectionTitle(
        root, y, QStringLiteral("Animation"),
        QStringLiteral(
            "performAnimated: frame on a spring, colour and scale ease-in-out, restarted in completions."));
    auto track = makeBox(KRRectMake(kMargin, y, 420, 76), Qt::white, 16);
    track->setBorderColor(kTileBorder);
    track->setBorderWidth(1);
    root.addSubview(track);
    auto square = makeBox(KRRectMake(14, 12, 52, 52), kAccent, 10);
    track->addSubview(square);
    runSquareLeg(square, true);

    auto pulseTile = makeBox(KRRectMake(kMargin + 450, y, 76, 76), Qt::white, 16);
    pulseTile->setBorderColor(kTileBorder);
    pulseTile->setBorderWidth(1);
    root.addSubview(pulseTile);
    auto dot = makeBox(KRRectMake(14, 14, 48, 48), kMint, 24);
    pulseTile->addSubview(dot);
    runPulse(dot, true);

    addLabel(root, KRRectMake(kMargin, y + 82, 420, 18),
             QStringLiteral("Spring (damping 0.55) + ease-in-out colour"));
    addLabel(root, KRRectMake(kMargin + 430, y + 82, 120, 18), QStringLiteral("Scale + alpha"), 12.0,
             kSecondaryInk, Qt::AlignCenter);
    return y + 120;
}

double addLayerLooks(KRView& root, double y) {
    y = addSectionTitle(
        root, y, QStringLiteral("Layer looks"),
        QStringLiteral("Drop shadow behind a rounded card, borders drawn on top of content."));
    auto card = makeBox(KRRectMake(kMargin + 8, y + 4, 250, 132), Qt::white, 14);
    card->setShadowOpacity(0.22);
    card->setShadowRadius(12);
    card->setShadowOffset(KRSizeMake(0, 8));
    root.addSubview(card);
    auto title = addLabel(*card, KRRectMake(18, 16, 214, 22), QStringLiteral("Rounded card"), 15.0, kInk);
    title->setBold(true);
    addLabel(*card, KRRectMake(18, 40, 214, 18), QStringLiteral("cornerRadius 14, shadowRadius 12"));
    addLabel(*card, KRRectMake(18, 58, 214, 18), QStringLiteral("shadowOffset {0, 8}, opacity 0.22"));
    auto chip = makeBox(KRRectMake(18, 90, 92, 26), kAccent, 13);
    card->addSubview(chip);
    addLabel(*chip, KRRectMake(0, 0, 92, 26), QStringLiteral("Action"), 12.0, Qt::white, Qt::AlignCenter);

    auto bordered = makeBox(KRRectMake(kMargin + 300, y + 4, 132, 132), QColor(232, 240, 253), 28);
    bordered->setBorderColor(kAccent);
    bordered->setBorderWidth(3);
    bordered->setMasksToBounds(true);
    root.addSubview(bordered);
    // The border stays on top of the subview that runs under it.
    bordered->addSubview(makeBox(KRRectMake(-10, 80, 152, 60), QColor(46, 120, 235, 110)));
    addLabel(*bordered, KRRectMake(0, 20, 132, 40), QStringLiteral("Border\non top"), 13.0, kInk,
             Qt::AlignCenter);

    auto softShadow = makeBox(KRRectMake(kMargin + 480, y + 4, 132, 132), kCoral, 66);
    softShadow->setShadowOpacity(0.45);
    softShadow->setShadowRadius(6);
    softShadow->setShadowOffset(KRSizeMake(6, 10));
    softShadow->setShadowColor(QColor(150, 30, 20));
    root.addSubview(softShadow);
    addLabel(*softShadow, KRRectMake(0, 46, 132, 40), QStringLiteral("Tinted\nshadow"), 13.0, Qt::white,
             Qt::AlignCenter);
    return y + 168;
}

std::shared_ptr<KRView> makeOverlapGroup(KRView& root, double x, double y, double groupAlpha,
                                         double childAlpha, const QString& caption) {
    auto group = std::make_shared<KRView>(KRRectMake(x, y, 180, 110));
    group->setAlphaValue(groupAlpha);
    root.addSubview(group);
    auto red = makeBox(KRRectMake(0, 0, 110, 80), kCoral, 12);
    red->setAlphaValue(childAlpha);
    auto blue = makeBox(KRRectMake(60, 30, 110, 80), kAccent, 12);
    blue->setAlphaValue(childAlpha);
    group->addSubview(red);
    group->addSubview(blue);
    addLabel(root, KRRectMake(x, y + 118, 200, 18), caption);
    return group;
}

double addSubtreeAlpha(KRView& root, double y) {
    y = addSectionTitle(
        root, y, QStringLiteral("Subtree alpha"),
        QStringLiteral("A view's alpha fades its whole subtree as one layer: overlaps do not darken."));
    makeOverlapGroup(root, kMargin, y, 1.0, 1.0, QStringLiteral("alpha 1"));
    makeOverlapGroup(root, kMargin + 240, y, 0.5, 1.0, QStringLiteral("parent alpha 0.5 (one layer)"));
    makeOverlapGroup(root, kMargin + 480, y, 1.0, 0.5, QStringLiteral("each child alpha 0.5"));
    return y + 150;
}

std::shared_ptr<KRView> makeClipExample(KRView& root, double x, double y, bool masks,
                                        const QString& caption) {
    auto frame = makeBox(KRRectMake(x, y + 20, 160, 110), QColor(226, 230, 240), 18);
    frame->setMasksToBounds(masks);
    root.addSubview(frame);
    frame->addSubview(makeBox(KRRectMake(90, -20, 100, 100), kMint, 50));
    frame->addSubview(makeBox(KRRectMake(-16, 70, 80, 60), kCoral, 10));
    addLabel(root, KRRectMake(x, y + 146, 220, 18), caption);
    return frame;
}

double addClipping(KRView& root, double y) {
    y = addSectionTitle(
        root, y, QStringLiteral("Clipping"),
        QStringLiteral("masksToBounds clips subviews to the rounded bounds; without it they spill out."));
    makeClipExample(root, kMargin + 10, y, true, QStringLiteral("masksToBounds = true"));
    makeClipExample(root, kMargin + 280, y, false, QStringLiteral("masksToBounds = false"));

    // Bounds origin scrolls the content of a clipping view.
    auto scroller = makeBox(KRRectMake(kMargin + 560, y + 20, 160, 110), Qt::white, 12);
    scroller->setBorderColor(kTileBorder);
    scroller->setBorderWidth(1);
    scroller->setMasksToBounds(true);
    root.addSubview(scroller);
    for (int row = 0; row < 8; ++row) {
        auto line = makeBox(KRRectMake(10, 8 + row * 26, 140, 20),
                            row % 2 ? QColor(232, 240, 253) : QColor(253, 236, 234), 6);
        addLabel(*line, KRRectMake(8, 0, 124, 20), QStringLiteral("Row %1").arg(row + 1), 11.0, kInk);
        scroller->addSubview(line);
    }
    scroller->setBoundsOrigin(KRPointMake(0, 40));
    addLabel(root, KRRectMake(kMargin + 560, y + 146, 220, 18), QStringLiteral("bounds origin {0, 40}"));
    return y + 180;
}

KRTextAttributes textAttributes(double size, const QColor& color, bool struck = false) {
    KRTextAttributes attributes;
    attributes.font = KRDefaults::regularFontOfSize(size);
    attributes.foregroundColor = color;
    attributes.strikethroughStyle = struck ? 1 : 0;
    const double lineHeight = std::ceil(size * 1.4);
    attributes.paragraphStyle = KRParagraphStyle{lineHeight, lineHeight};
    return attributes;
}

std::shared_ptr<KRTextField> addField(KRView& root, KRRect frame, const KRAttributedString& value,
                                      const QString& caption) {
    auto field = std::make_shared<KRTextField>(frame);
    field->setAttributedStringValue(value);
    field->setFrameSize(KRSizeMake(frame.size.width, field->sizeThatFits(frame.size).height));
    root.addSubview(field);
    addLabel(root,
             KRRectMake(frame.origin.x, field->frame().origin.y + field->frame().size.height + 6, 360, 18),
             caption);
    return field;
}

double addTextFields(KRView& root, double y) {
    y = addSectionTitle(
        root, y, QStringLiteral("Text fields"),
        QStringLiteral("KRTextField draws and measures its text exactly as its field editor lays it out."));
    const double column = 400.0;
    auto plain =
        addField(root, KRRectMake(kMargin, y, 340, 30),
                 KRAttributedString(QStringLiteral("Bordered field, one line"), textAttributes(13, kInk)),
                 QStringLiteral("bordered, with background"));
    auto placeholder = addField(root, KRRectMake(kMargin, y + 64, 340, 30), KRAttributedString(QString(), {}),
                                QStringLiteral("empty, showing its placeholder"));
    placeholder->setPlaceholderString(QStringLiteral("Checklist"));
    auto struck = addField(root, KRRectMake(kMargin, y + 128, 340, 30),
                           KRAttributedString(QStringLiteral("Canceled: strikethrough, grey"),
                                              textAttributes(13, kSecondaryInk, true)),
                           QStringLiteral("strikethrough attribute"));
    auto rightToLeft = addField(
        root, KRRectMake(kMargin, y + 192, 340, 30),
        KRAttributedString(QStringLiteral("לקנות חלב ולחם לפני סוף השבוע"), textAttributes(13, kInk)),
        QStringLiteral("right-to-left text starts at the right"));

    // A wrapped value: the field measures and draws it as its editor would lay it out.
    auto tile = makeBox(KRRectMake(kMargin + column, y, 380, 150), Qt::white, 10);
    tile->setBorderColor(kTileBorder);
    tile->setBorderWidth(1);
    root.addSubview(tile);
    auto editedField = std::make_shared<KRTextField>(KRRectMake(14, 12, 352, 80));
    editedField->setBordered(false);
    editedField->setDrawsBackground(false);
    editedField->setAttributedStringValue(KRAttributedString(
        QStringLiteral("Book flights to Lisbon, a hotel near Alfama and a table at the fado place "
                       "for Saturday night — then tell everybody 🎉"),
        textAttributes(14, kInk)));
    editedField->setFrameSize(KRSizeMake(352, editedField->sizeThatFits(KRSizeMake(352, 99999999.0)).height));
    tile->addSubview(editedField);
    addLabel(*tile, KRRectMake(14, 118, 352, 18), QStringLiteral("wrapped over three lines"));
    return y + 260;
}

// --- Check-list rows ---------------------------------------------------------------------------------

constexpr double kRowWidth = 380.0;

struct RowSample {
    QString title;
    QString caption;
    std::function<void(KRCheckListItemView&)> configure;
};

std::shared_ptr<KRCheckListItemView> makeRow(const QString& title, double y) {
    auto row =
        std::make_shared<KRCheckListItemView>(KRRectMake(0, y, kRowWidth, KRCheckListDefaults::itemHeight()));
    row->update([&] {
        row->setTitle(title);
        row->setDrawsBottomDivider(true);
    });
    // After the first update, so the placeholder takes the row's placeholder attributes.
    row->setPlaceholder(QStringLiteral("Checklist"));
    row->setFrameSize(row->sizeThatFits(row->frame().size));
    return row;
}

// Rows in every state, stacked in a list-like card with a caption beside each; one row floats, dragged.
double addCheckListRows(KRView& root, double y, std::shared_ptr<KRTextField>& editedField) {
    y = addSectionTitle(root, y, QStringLiteral("Check-list rows"),
                        QStringLiteral("KRCheckListItemView in each state. The handle shows on edited, "
                                       "selected and dragged rows."));
    const std::vector<RowSample> samples = {
        {QStringLiteral("Buy milk and bread"), QStringLiteral("open"), [](KRCheckListItemView&) {}},
        {QStringLiteral("Call the plumber"), QStringLiteral("completed"),
         [](KRCheckListItemView& row) { row.setStatus(1); }},
        {QStringLiteral("Renew the passport"), QStringLiteral("canceled: struck through"),
         [](KRCheckListItemView& row) { row.setStatus(2); }},
        {QStringLiteral("Status 5 draws as open"), QStringLiteral("status 5"),
         [](KRCheckListItemView& row) { row.setStatus(5); }},
        {QStringLiteral("Book flights to Lisbon"), QStringLiteral("edited, with a selection"),
         [](KRCheckListItemView& row) { row.setEdited(true); }},
        {QStringLiteral("Review the budget"), QStringLiteral("selected"),
         [](KRCheckListItemView& row) { row.setSelected(true); }},
        {QStringLiteral("Email Sam about the slides"), QStringLiteral("highlighted: check box held down"),
         [](KRCheckListItemView& row) { row.setHighlighted(true); }},
        {QStringLiteral("Pack for the weekend: walking shoes, rain jacket, the good camera, chargers, "
                        "the guidebook and something to read on the train"),
         QStringLiteral("a title wrapped over three lines"), [](KRCheckListItemView&) {}},
        {QString(), QStringLiteral("empty title: its placeholder"), [](KRCheckListItemView&) {}},
        {QStringLiteral("No dividers on this one"), QStringLiteral("without dividers"),
         [](KRCheckListItemView& row) { row.setDrawsBottomDivider(false); }},
    };

    auto card = makeBox(KRRectMake(kMargin, y, kRowWidth + 16, 100), Qt::white, 10);
    card->setBorderColor(kTileBorder);
    card->setBorderWidth(1);
    root.addSubview(card);
    double rowY = 8.0;
    for (const RowSample& sample : samples) {
        auto row = makeRow(sample.title, rowY);
        row->setFrameOrigin(KRPointMake(8, rowY));
        row->update([&] { sample.configure(*row); });
        row->setFrameSize(row->sizeThatFits(row->frame().size));
        card->addSubview(row);
        if (row->isEdited()) {
            row->titleTextField()->setEditable(true);
            editedField = row->titleTextField();
        }
        addLabel(root, KRRectMake(kMargin + kRowWidth + 36, y + rowY, 300, KRCheckListDefaults::itemHeight()),
                 sample.caption);
        rowY += row->frame().size.height;
    }
    card->setFrameSize(KRSizeMake(kRowWidth + 16, rowY + 8));

    // Lifted out of the list while dragged: selected fill, shadow, handle showing pressed.
    const double draggedY = y + rowY + 36;
    auto dragged = makeRow(QStringLiteral("Dragged: follows the pointer with a shadow"), 0);
    dragged->setFrameOrigin(KRPointMake(kMargin + 8 + KRCheckListDefaults::hoverOffsetX(),
                                        draggedY + KRCheckListDefaults::hoverOffsetY() + 14));
    dragged->update([&] {
        dragged->setDragged(true);
        dragged->setDrawsShadow(true);
        dragged->setDrawsBottomDivider(false);
    });
    root.addSubview(dragged);
    addLabel(root, KRRectMake(kMargin + kRowWidth + 36, draggedY + 7, 300, KRCheckListDefaults::itemHeight()),
             QStringLiteral("dragged, with its shadow"));
    return draggedY + 70;
}

} // namespace

KRGalleryLabel::KRGalleryLabel(KRRect frame, QString text, double pointSize, QColor color,
                               Qt::Alignment alignment)
    : KRView(frame), m_text(std::move(text)), m_font(KRDefaults::regularFontOfSize(pointSize)),
      m_color(color), m_alignment(alignment) {
    setIgnoresMouseEvents(true);
}

void KRGalleryLabel::setText(const QString& text) {
    m_text = text;
    setNeedsDisplay();
}

void KRGalleryLabel::setBold(bool bold) {
    m_font.setBold(bold);
    setNeedsDisplay();
}

void KRGalleryLabel::draw(QPainter& painter, KRRect) {
    painter.setFont(m_font);
    painter.setPen(m_color);
    painter.drawText(KRToQRectF(bounds()), static_cast<int>(m_alignment), m_text);
}

KRGalleryContent KRMakeGalleryContent() {
    auto root = std::make_shared<KRView>(KRRectMake(0, 0, kContentWidth, 100));
    root->setBackgroundColor(kPageColor);

    auto title =
        addLabel(*root, KRRectMake(kMargin, 22, 600, 32), QStringLiteral("KRAppKit Gallery"), 24.0, kInk);
    title->setBold(true);
    double y = 76.0;
    y = addButtons(*root, y);
    y = addAnimations(*root, y);
    y = addLayerLooks(*root, y);
    y = addSubtreeAlpha(*root, y);
    y = addClipping(*root, y);
    y = addTextFields(*root, y);
    std::shared_ptr<KRTextField> editedField;
    y = addCheckListRows(*root, y, editedField);
    root->setFrameSize(KRSizeMake(kContentWidth, y + kMargin));
    return KRGalleryContent{root, kLegDuration, editedField, KRMakeRange(13, 6)};
}
