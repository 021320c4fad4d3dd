#pragma once

#include "KRMonkeyEvent.h"

class KRMonkeyRandom;
class KRMonkeySession;

// One kind of input the monkey makes: keys, menu shortcuts, typing, clicks. A kind draws all of its choices
// from the random source when it makes an event and keeps them in the event, so that delivering the event
// again does the same thing.
class KRMonkeyEventKind {
public:
    virtual ~KRMonkeyEventKind() = default;

    virtual QString name() const = 0;
    // session is the window the event will be delivered to next, for choices that depend on what is shown
    // (how many rows there are); the event must not rely on it staying so.
    virtual KRMonkeyEvent makeEvent(KRMonkeyRandom& random, const KRMonkeySession& session) const = 0;
};
