#pragma once

#include <QString>

#include <functional>

class KRMonkeySession;

// One input the monkey made. It keeps everything it needs to be delivered again, so a run can be replayed
// on a fresh window and store, and shortened event by event.
struct KRMonkeyEvent {
    // The kind that made it ("key", "click", …).
    QString kind;
    // What it was meant to do, as it was made.
    QString description;
    // Delivers it to session and answers what it did there: targets are found when the event is delivered
    // (the row it names may have gone), so this is what a reproduction prints.
    std::function<QString(KRMonkeySession& session)> deliver;
};
