#pragma once

// Forward declarations of this module's types, for headers that only name them.
struct KRPoint;
struct KRSize;
struct KRRect;
struct KREdgeInsets;
