#pragma once

#include "KRMonkeyEvent.h"

#include <memory>
#include <vector>

class KRMonkeyEventKind;
class KRMonkeyRandom;
class KRMonkeySession;

// The table of event kinds, each with a weight: the chance of a kind is its weight over the sum.
class KRMonkeyEventGenerator {
public:
    // Keys of the command table, menu shortcuts, typing, clicks, and now and then a drawing of the list or a
    // new window size.
    static KRMonkeyEventGenerator makeDefault();

    void addKind(std::shared_ptr<const KRMonkeyEventKind> kind, int weight);
    KRMonkeyEvent makeEvent(KRMonkeyRandom& random, const KRMonkeySession& session) const;
    bool isEmpty() const { return m_kinds.empty(); }

private:
    struct Entry {
        std::shared_ptr<const KRMonkeyEventKind> kind;
        int weight = 0;
    };
    std::vector<Entry> m_kinds;
    int m_totalWeight = 0;
};
