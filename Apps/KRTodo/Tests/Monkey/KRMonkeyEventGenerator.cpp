#include "KRMonkeyEventGenerator.h"

#include "KRMonkeyClickEventKind.h"
#include "KRMonkeyKeyEventKind.h"
#include "KRMonkeyRandom.h"
#include "KRMonkeyRenderEventKind.h"
#include "KRMonkeyResizeEventKind.h"
#include "KRMonkeyShortcutEventKind.h"
#include "KRMonkeyTypingEventKind.h"

#include <utility>

KRMonkeyEventGenerator KRMonkeyEventGenerator::makeDefault() {
    KRMonkeyEventGenerator generator;
    generator.addKind(std::make_shared<KRMonkeyKeyEventKind>(), 40);
    generator.addKind(std::make_shared<KRMonkeyShortcutEventKind>(), 12);
    generator.addKind(std::make_shared<KRMonkeyTypingEventKind>(), 18);
    generator.addKind(std::make_shared<KRMonkeyClickEventKind>(), 30);
    generator.addKind(std::make_shared<KRMonkeyRenderEventKind>(), 3);
    generator.addKind(std::make_shared<KRMonkeyResizeEventKind>(), 2);
    return generator;
}

void KRMonkeyEventGenerator::addKind(std::shared_ptr<const KRMonkeyEventKind> kind, int weight) {
    if (!kind || weight <= 0) {
        return;
    }
    m_kinds.push_back(Entry{std::move(kind), weight});
    m_totalWeight += weight;
}

KRMonkeyEvent KRMonkeyEventGenerator::makeEvent(KRMonkeyRandom& random,
                                                const KRMonkeySession& session) const {
    auto draw = static_cast<int>(random.below(static_cast<std::uint64_t>(m_totalWeight)));
    for (const Entry& entry : m_kinds) {
        if (draw < entry.weight) {
            return entry.kind->makeEvent(random, session);
        }
        draw -= entry.weight;
    }
    return m_kinds.back().kind->makeEvent(random, session);
}
