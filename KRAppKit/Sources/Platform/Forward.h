#pragma once

// Forward declarations of this module's types, for headers that only name them.
class KRHostWidget;
class KRPasteboard;
