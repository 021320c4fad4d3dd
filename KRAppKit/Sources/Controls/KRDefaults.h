#pragma once

#include <QColor>
#include <QFont>

// The kit's fonts and named colours, tuned for a light appearance.
class KRDefaults {
public:
    // The platform's regular UI font at `points`. One point is one device-independent pixel here, so the
    // size is set in pixels (rounded to whole pixels): text then measures the same on every platform,
    // whatever the screen's logical DPI claims.
    static QFont regularFontOfSize(double points);

    // Named colours --------------------------------------------------------------------------------------
    static QColor skyflowerBlueColor();          // the accent blue
    static QColor taskSecondaryColor();          // secondary text
    static QColor taskDetailsPlaceholderColor(); // placeholder text
    static QColor manateeGrayColor();            // mid grey
    static QColor sharkBlackColor();             // primary text, near black
    static QColor vantorBlue3Color();            // light accent blue (selection fills)
    static QColor vantorBlue8Color();            // saturated accent blue

    // Text fields ----------------------------------------------------------------------------------------
    static QColor textFieldBorderColor();
    static QColor textFieldBackgroundColor();
    static QColor keyboardFocusIndicatorColor();
    static QColor selectedTextBackgroundColor();
    static double textFieldFontSize();
    // How far a bordered field's text sits inside its border, on each side.
    static double textFieldBorderedTextInset();
    static double focusRingWidth();

    static QColor clearColor(); // transparent black
    static QColor whiteColor();
    static QColor blackColor();
    // A grey of the given white level (0 black, 1 white).
    static QColor colorWithWhite(double white, double alpha);
    static QColor colorWithAlpha(const QColor& color, double alpha);
    // base * (1 - fraction) + other * fraction, per RGBA component; fraction is clamped to [0, 1].
    // Answers an invalid colour when either colour is invalid.
    static QColor blendedColor(const QColor& base, double fraction, const QColor& other);
};
