#pragma once

// Forward declarations of this module's types, for headers that only name them.
class KRCursor;
class KREvent;
class KRRenderer;
class KRResponder;
class KRTextInputClient;
class KRTrackingArea;
class KRView;
class KRWindow;
