#pragma once

// Forward declarations of this module's types, for headers that only name them.
class KRButtonViewDelegate;
class KRButtonView;
class KRDefaults;
class KRHelper;
struct KRImageRepresentation;
class KRImage;
