#pragma once

// Forward declarations of this module's types, for headers that only name them.
class KRInternalInconsistencyException;
class KRGenericException;
class KRAssertionHandler;
class KRClock;
template <class T> class KRCompactArray;
class KRIndexSet;
class KRMutableIndexSet;
class KRLogCapture;
struct KRKeyValueChange;
class KRObject;
template <class T> class KRWeak;
template <class T> class KRWeakDelegate;
struct KRRange;
class KRRunLoop;
class KRSelector;
class KRTrace;
