#include "Foundation/KRObject.h"

#include <gtest/gtest.h>

#include <cstring>

#include <QString>
#include <QStringList>

#include <functional>
#include <memory>
#include <string>

namespace {

// An object with one observable key, "title".
class TitledObject : public KRObject {
public:
    const QString& title() const { return m_title; }
    void setTitle(const QString& title) { setValueNotifying("title", m_title, title); }
    void setCount(int count) { setValueNotifying("count", m_count, count); }

private:
    QString m_title;
    int m_count = 0;
};

// Records every notification it receives, with an optional hook that runs inside the callback.
class Recorder : public KRObject {
public:
    explicit Recorder(QString name = QString(), QStringList* journal = nullptr)
        : m_name(std::move(name)), m_journal(journal) {}

    void observeValueForKeyPath(const char* keyPath, KRObject* object, const KRKeyValueChange& change,
                                const void* context) override {
        keyPaths.push_back(keyPath);
        objects.push_back(object);
        changes.push_back(change);
        contexts.push_back(context);
        if (m_journal) {
            m_journal->append(m_name);
        }
        if (onNotify) {
            onNotify();
        }
    }

    std::vector<std::string> keyPaths;
    std::vector<KRObject*> objects;
    std::vector<KRKeyValueChange> changes;
    std::vector<const void*> contexts;
    std::function<void()> onNotify;

private:
    QString m_name;
    QStringList* m_journal;
};

// Takes a weak reference to itself while being constructed.
class SelfReferencing : public KRObject {
public:
    SelfReferencing() : self(this) {}
    KRWeak<SelfReferencing> self;
};

int g_context = 0;

} // namespace

TEST(KRObjectTests, WeakReferenceReadsTheLiveObject) {
    auto object = std::make_unique<TitledObject>();
    KRWeak<TitledObject> weak(object.get());
    EXPECT_EQ(weak.get(), object.get());
    EXPECT_TRUE(static_cast<bool>(weak));
    EXPECT_TRUE(weak == object.get());
}

TEST(KRObjectTests, WeakReferenceReadsNullAfterDestruction) {
    auto object = std::make_unique<TitledObject>();
    KRWeak<TitledObject> weak(object.get());
    object.reset();
    EXPECT_EQ(weak.get(), nullptr);
    EXPECT_FALSE(static_cast<bool>(weak));
}

TEST(KRObjectTests, WeakReferenceToAStackObjectExpiresWithItsScope) {
    KRWeak<KRObject> weak;
    {
        KRObject object;
        weak.reset(&object);
        EXPECT_EQ(weak.get(), &object);
    }
    EXPECT_EQ(weak.get(), nullptr);
}

TEST(KRObjectTests, WeakReferenceFormedInAConstructorWorks) {
    auto object = std::make_shared<SelfReferencing>();
    EXPECT_EQ(object->self.get(), object.get());
    KRWeak<SelfReferencing> outside(object);
    object.reset();
    EXPECT_EQ(outside.get(), nullptr);
}

TEST(KRObjectTests, LifetimeTokenIsCreatedOnceAndPointsAtTheObject) {
    KRObject object;
    const std::shared_ptr<KRObject*>& first = object.lifetimeToken();
    EXPECT_EQ(*first, &object);
    EXPECT_EQ(object.lifetimeToken().get(), first.get());
}

TEST(KRObjectTests, ResetAndNullConstructionGiveAnEmptyReference) {
    KRObject object;
    KRWeak<KRObject> weak(&object);
    weak.reset();
    EXPECT_EQ(weak.get(), nullptr);
    KRWeak<KRObject> none(nullptr);
    EXPECT_FALSE(static_cast<bool>(none));
}

TEST(KRObjectTests, ObserverReceivesOldAndNewValuesWhenAsked) {
    TitledObject object;
    Recorder recorder;
    object.setTitle(QStringLiteral("before"));
    object.addObserver(&recorder, "title", KRKeyValueObservingOptionOld | KRKeyValueObservingOptionNew,
                       &g_context);
    object.setTitle(QStringLiteral("after"));
    ASSERT_EQ(recorder.changes.size(), 1u);
    const KRKeyValueChange& change = recorder.changes[0];
    EXPECT_TRUE(change.hasOld);
    EXPECT_TRUE(change.hasNew);
    EXPECT_EQ(change.oldValue.toString(), QStringLiteral("before"));
    EXPECT_EQ(change.newValue.toString(), QStringLiteral("after"));
    EXPECT_EQ(recorder.keyPaths[0], "title");
    EXPECT_EQ(recorder.objects[0], &object);
    EXPECT_EQ(recorder.contexts[0], &g_context);
    object.removeObserver(&recorder, "title", &g_context);
}

TEST(KRObjectTests, ChangeCarriesOnlyTheRequestedValues) {
    TitledObject object;
    Recorder onlyNew;
    Recorder onlyOld;
    object.addObserver(&onlyNew, "title", KRKeyValueObservingOptionNew, nullptr);
    object.addObserver(&onlyOld, "title", KRKeyValueObservingOptionOld, nullptr);
    object.setTitle(QStringLiteral("x"));
    ASSERT_EQ(onlyNew.changes.size(), 1u);
    ASSERT_EQ(onlyOld.changes.size(), 1u);
    EXPECT_TRUE(onlyNew.changes[0].hasNew);
    EXPECT_FALSE(onlyNew.changes[0].hasOld);
    EXPECT_FALSE(onlyNew.changes[0].oldValue.isValid());
    EXPECT_EQ(onlyNew.changes[0].newValue.toString(), QStringLiteral("x"));
    EXPECT_TRUE(onlyOld.changes[0].hasOld);
    EXPECT_FALSE(onlyOld.changes[0].hasNew);
    EXPECT_FALSE(onlyOld.changes[0].newValue.isValid());
}

TEST(KRObjectTests, ObserversRunInRegistrationOrder) {
    TitledObject object;
    QStringList journal;
    Recorder first(QStringLiteral("first"), &journal);
    Recorder second(QStringLiteral("second"), &journal);
    Recorder third(QStringLiteral("third"), &journal);
    object.addObserver(&second, "title", KRKeyValueObservingOptionNone, nullptr);
    object.addObserver(&first, "title", KRKeyValueObservingOptionNone, nullptr);
    object.addObserver(&third, "title", KRKeyValueObservingOptionNone, nullptr);
    object.setTitle(QStringLiteral("go"));
    EXPECT_EQ(journal,
              (QStringList{QStringLiteral("second"), QStringLiteral("first"), QStringLiteral("third")}));
}

TEST(KRObjectTests, RegistrationWithoutValuesAlwaysReportsAChange) {
    TitledObject object;
    Recorder recorder;
    object.setTitle(QStringLiteral("same"));
    object.addObserver(&recorder, "title", KRKeyValueObservingOptionNone, nullptr);
    object.setTitle(QStringLiteral("same"));
    ASSERT_EQ(recorder.changes.size(), 1u);
    EXPECT_FALSE(recorder.changes[0].hasOld);
    EXPECT_FALSE(recorder.changes[0].hasNew);
    EXPECT_TRUE(recorder.changes[0].valuesDiffer());
}

TEST(KRObjectTests, RegistrationWithEqualOldAndNewReportsNoDifference) {
    TitledObject object;
    Recorder recorder;
    object.setCount(3);
    object.addObserver(&recorder, "count", KRKeyValueObservingOptionOld | KRKeyValueObservingOptionNew,
                       nullptr);
    object.setCount(3);
    object.setCount(4);
    ASSERT_EQ(recorder.changes.size(), 2u);
    EXPECT_FALSE(recorder.changes[0].valuesDiffer());
    EXPECT_TRUE(recorder.changes[1].valuesDiffer());
}

TEST(KRObjectTests, KeysAreComparedByContentNotByPointer) {
    TitledObject object;
    Recorder recorder;
    const std::string key = std::string("ti") + "tle";
    object.addObserver(&recorder, key.c_str(), KRKeyValueObservingOptionNone, nullptr);
    EXPECT_TRUE(object.hasObserversForKey("title"));
    EXPECT_FALSE(object.hasObserversForKey("count"));
    object.setTitle(QStringLiteral("a"));
    object.setCount(1);
    EXPECT_EQ(recorder.changes.size(), 1u);
    object.removeObserver(&recorder, "title", nullptr);
    EXPECT_EQ(object.observationCount(), 0u);
}

TEST(KRObjectTests, RemoveObserverMatchesObserverKeyAndContext) {
    TitledObject object;
    Recorder recorder;
    int otherContext = 0;
    object.addObserver(&recorder, "title", KRKeyValueObservingOptionNone, &g_context);
    object.removeObserver(&recorder, "title", &otherContext);
    object.removeObserver(&recorder, "count", &g_context);
    EXPECT_EQ(object.observationCount(), 1u);
    object.removeObserver(&recorder, "title", &g_context);
    EXPECT_EQ(object.observationCount(), 0u);
    object.setTitle(QStringLiteral("unobserved"));
    EXPECT_TRUE(recorder.changes.empty());
}

TEST(KRObjectTests, RemoveObserverTakesTheMostRecentMatch) {
    TitledObject object;
    Recorder recorder;
    object.addObserver(&recorder, "title", KRKeyValueObservingOptionNone, nullptr);
    object.addObserver(&recorder, "title", KRKeyValueObservingOptionNew, nullptr);
    object.removeObserver(&recorder, "title", nullptr);
    object.setTitle(QStringLiteral("z"));
    ASSERT_EQ(recorder.changes.size(), 1u);
    EXPECT_FALSE(recorder.changes[0].hasNew);
}

TEST(KRObjectTests, RemovalInReverseOrderLeavesNoObservations) {
    TitledObject object;
    Recorder a;
    Recorder b;
    object.addObserver(&a, "title", KRKeyValueObservingOptionNone, nullptr);
    object.addObserver(&b, "title", KRKeyValueObservingOptionNew, &g_context);
    object.addObserver(&a, "count", KRKeyValueObservingOptionOld, nullptr);
    EXPECT_EQ(object.observationCount(), 3u);
    object.removeObserver(&a, "count", nullptr);
    object.removeObserver(&b, "title", &g_context);
    object.removeObserver(&a, "title", nullptr);
    EXPECT_EQ(object.observationCount(), 0u);
    EXPECT_FALSE(object.hasObserversForKey("title"));
}

TEST(KRObjectTests, ObjectMayObserveItself) {
    class SelfObserver : public TitledObject {
    public:
        void observeValueForKeyPath(const char*, KRObject* object, const KRKeyValueChange&,
                                    const void*) override {
            sawItself = object == this;
            ++notifications;
        }
        bool sawItself = false;
        int notifications = 0;
    };
    SelfObserver object;
    object.addObserver(&object, "title", KRKeyValueObservingOptionNone, nullptr);
    object.setTitle(QStringLiteral("me"));
    EXPECT_EQ(object.notifications, 1);
    EXPECT_TRUE(object.sawItself);
    object.removeObserver(&object, "title", nullptr);
}

TEST(KRObjectTests, ObserverRemovedDuringNotificationIsNotCalledAfterwards) {
    TitledObject object;
    Recorder first;
    Recorder second;
    first.onNotify = [&] {
        object.removeObserver(&first, "title", nullptr);
        object.removeObserver(&second, "title", nullptr);
    };
    object.addObserver(&first, "title", KRKeyValueObservingOptionNone, nullptr);
    object.addObserver(&second, "title", KRKeyValueObservingOptionNone, nullptr);
    object.setTitle(QStringLiteral("one"));
    object.setTitle(QStringLiteral("two"));
    EXPECT_EQ(first.changes.size(), 1u);
    EXPECT_TRUE(second.changes.empty());
    EXPECT_EQ(object.observationCount(), 0u);
}

TEST(KRObjectTests, ObserverAddedDuringNotificationWaitsForTheNextChange) {
    TitledObject object;
    Recorder first;
    Recorder late;
    first.onNotify = [&] {
        if (late.changes.empty() && !object.hasObserversForKey("count")) {
            object.addObserver(&late, "title", KRKeyValueObservingOptionNone, nullptr);
            object.addObserver(&late, "count", KRKeyValueObservingOptionNone, nullptr);
        }
    };
    object.addObserver(&first, "title", KRKeyValueObservingOptionNone, nullptr);
    object.setTitle(QStringLiteral("one"));
    EXPECT_TRUE(late.changes.empty());
    object.setTitle(QStringLiteral("two"));
    EXPECT_EQ(late.changes.size(), 1u);
}

TEST(KRObjectTests, SettingWithoutObserversStillStoresTheValue) {
    TitledObject object;
    object.setTitle(QStringLiteral("stored"));
    EXPECT_EQ(object.title(), QStringLiteral("stored"));
    EXPECT_EQ(object.observationCount(), 0u);
}

TEST(KRObjectTests, DefaultActionsAreNotHandled) {
    KRObject object;
    EXPECT_FALSE(object.tryToPerform(KRSelector("copy:"), nullptr));
    EXPECT_FALSE(object.respondsToSelector(KRSelector("copy:")));
    KRKeyValueChange change;
    object.observeValueForKeyPath("title", &object, change, nullptr);
    EXPECT_EQ(object.observationCount(), 0u);
}

TEST(KRObjectTests, DescriptionNamesTheClassAndTheAddress) {
    TitledObject object;
    const QString expected = QStringLiteral("<(anonymous namespace)::TitledObject: 0x%1>")
                                 .arg(reinterpret_cast<quintptr>(&object), 0, 16);
    EXPECT_EQ(object.description(), expected);
}

TEST(KRObjectTests, ObservationInfoListsRegistrationsInTheirOrder) {
    TitledObject object;
    EXPECT_TRUE(object.observationInfo().empty());
    static const char contextA = 'a';
    static const char contextB = 'b';
    object.addObserver(&object, "title", KRKeyValueObservingOptionOld | KRKeyValueObservingOptionNew,
                       &contextA);
    object.addObserver(&object, "count", KRKeyValueObservingOptionNone, &contextB);

    const auto& info = object.observationInfo();
    ASSERT_EQ(info.size(), 2u);
    EXPECT_STREQ(info[0].keyPath, "title");
    EXPECT_EQ(info[0].options, unsigned(KRKeyValueObservingOptionOld | KRKeyValueObservingOptionNew));
    EXPECT_EQ(info[0].context, &contextA);
    EXPECT_EQ(info[0].observer, &object);
    EXPECT_STREQ(info[1].keyPath, "count");
    EXPECT_EQ(info[1].context, &contextB);
    object.removeObserver(&object, "count", &contextB);
    object.removeObserver(&object, "title", &contextA);
    EXPECT_TRUE(object.observationInfo().empty());
}

namespace {

// An object that observes its own "title" and "count", and says so in a shared journal.
class SelfObserving : public TitledObject {
public:
    explicit SelfObserving(QStringList* journal) : m_journal(journal) {}

    void observeValueForKeyPath(const char* keyPath, KRObject*, const KRKeyValueChange&,
                                const void*) override {
        m_journal->append(QStringLiteral("self:") + QString::fromLatin1(keyPath));
    }

private:
    QStringList* m_journal;
};

} // namespace

TEST(KRObjectTests, SelfAndForeignObserversAreToldInRegistrationOrder) {
    QStringList journal;
    SelfObserving object(&journal);
    Recorder recorder(QStringLiteral("recorder"), &journal);
    static const char context = 'c';
    object.addObserver(&object, "title", KRKeyValueObservingOptionNone, &context);
    object.addObserver(&recorder, "title", KRKeyValueObservingOptionNone, &context);
    object.addObserver(&object, "title", KRKeyValueObservingOptionNew, &context);

    object.setTitle(QStringLiteral("a"));

    EXPECT_EQ(journal, QStringList({"self:title", "recorder", "self:title"}));
    ASSERT_EQ(object.observationCount(), 3u);
    EXPECT_EQ(object.observationInfo()[1].observer, &recorder);
}

TEST(KRObjectTests, RemovingAnEarlierSelfRegistrationKeepsTheLaterOnes) {
    QStringList journal;
    SelfObserving object(&journal);
    static const char first = '1';
    static const char second = '2';
    object.addObserver(&object, "title", KRKeyValueObservingOptionNone, &first);
    object.addObserver(&object, "count", KRKeyValueObservingOptionNone, &second);

    object.removeObserver(&object, "title", &first);
    object.setTitle(QStringLiteral("a"));
    object.setCount(2);

    EXPECT_EQ(journal, QStringList({"self:count"}));
    ASSERT_EQ(object.observationCount(), 1u);
    EXPECT_EQ(object.observationInfo()[0].context, &second);
}

TEST(KRObjectTests, ObjectsWithTheSameSelfRegistrationsEachKeepTheirOwn) {
    QStringList journalA;
    QStringList journalB;
    SelfObserving a(&journalA);
    SelfObserving b(&journalB);
    static const char context = 'c';
    for (SelfObserving* object : {&a, &b}) {
        object->addObserver(object, "title", KRKeyValueObservingOptionNone, &context);
    }
    b.addObserver(&b, "count", KRKeyValueObservingOptionNone, &context);

    a.setTitle(QStringLiteral("x"));
    a.setCount(1);
    b.setCount(1);

    EXPECT_EQ(journalA, QStringList({"self:title"}));
    EXPECT_EQ(journalB, QStringList({"self:count"}));
    EXPECT_EQ(a.observationInfo()[0].observer, &a);
    EXPECT_EQ(b.observationInfo()[0].observer, &b);
}

TEST(KRObjectTests, ObserverThatDestroysTheObjectEndsTheNotification) {
    auto object = std::make_unique<TitledObject>();
    Recorder first;
    Recorder second;
    first.onNotify = [&] { object.reset(); };
    object->addObserver(&first, "title", KRKeyValueObservingOptionNone, nullptr);
    object->addObserver(&second, "title", KRKeyValueObservingOptionNone, nullptr);
    object->setTitle(QStringLiteral("gone"));
    EXPECT_EQ(object, nullptr);
    EXPECT_EQ(first.changes.size(), 1u);
    EXPECT_TRUE(second.changes.empty()) << "nobody hears from an object that is gone";
}

TEST(KRObjectTests, DestroyingAnOuterNotifierFromANestedNotificationEndsOnlyTheOuterOne) {
    auto outer = std::make_unique<TitledObject>();
    TitledObject inner;
    Recorder outerFirst;
    Recorder outerSecond;
    Recorder innerFirst;
    Recorder innerSecond;
    outerFirst.onNotify = [&] { inner.setTitle(QStringLiteral("nested")); };
    innerFirst.onNotify = [&] { outer.reset(); };
    outer->addObserver(&outerFirst, "title", KRKeyValueObservingOptionNone, nullptr);
    outer->addObserver(&outerSecond, "title", KRKeyValueObservingOptionNone, nullptr);
    inner.addObserver(&innerFirst, "title", KRKeyValueObservingOptionNone, nullptr);
    inner.addObserver(&innerSecond, "title", KRKeyValueObservingOptionNone, nullptr);

    outer->setTitle(QStringLiteral("outer"));

    EXPECT_EQ(outer, nullptr);
    EXPECT_EQ(innerFirst.changes.size(), 1u);
    EXPECT_EQ(innerSecond.changes.size(), 1u) << "the inner object is alive and tells everyone";
    EXPECT_EQ(outerFirst.changes.size(), 1u);
    EXPECT_TRUE(outerSecond.changes.empty());
    inner.removeObserver(&innerSecond, "title", nullptr);
    inner.removeObserver(&innerFirst, "title", nullptr);
}

TEST(KRObjectTests, SelfRegistrationsSurviveTheFirstWeakReference) {
    TitledObject object;
    object.addObserver(&object, "title", KRKeyValueObservingOptionNew, &g_context);
    object.addObserver(&object, "count", KRKeyValueObservingOptionOld, nullptr);

    const KRWeak<TitledObject> weak(&object);

    EXPECT_EQ(weak.get(), &object);
    ASSERT_EQ(object.observationCount(), 2u);
    const std::vector<KRObject::Observation> info = object.observationInfo();
    ASSERT_EQ(info.size(), 2u);
    EXPECT_STREQ(info[0].keyPath, "title");
    EXPECT_EQ(info[0].context, &g_context);
    EXPECT_STREQ(info[1].keyPath, "count");
    EXPECT_TRUE(object.hasObserversForKey("count"));
    object.removeObserver(&object, "count", nullptr);
    object.removeObserver(&object, "title", &g_context);
    EXPECT_EQ(object.observationCount(), 0u);
    EXPECT_EQ(weak.get(), &object);
}

TEST(KRObjectTests, OnlyARegistrationForTheKeyCountsAsAnObserver) {
    TitledObject object;
    Recorder recorder;
    EXPECT_FALSE(object.hasObserversForKey("title"));
    const KRWeak<KRObject> weak(&object);
    EXPECT_FALSE(object.hasObserversForKey("title")) << "a weak reference watches the lifetime, not a key";
    object.addObserver(&recorder, "status", KRKeyValueObservingOptionNone, nullptr);
    EXPECT_FALSE(object.hasObserversForKey("title"));
    EXPECT_TRUE(object.hasObserversForKey("status"));
    object.removeObserver(&recorder, "status", nullptr);
    EXPECT_FALSE(object.hasObserversForKey("status"));
    object.addObserver(&object, "title", KRKeyValueObservingOptionNone, nullptr);
    EXPECT_TRUE(object.hasObserversForKey("title"));
    object.removeObserver(&object, "title", nullptr);
}

// Objects sharing their self-registrations remember the last key asked about; a key in a buffer that is
// reused for another key must still get its own answer.
TEST(KRObjectTests, SelfRegistrationsAnswerEachKeyAskedInTurnAlsoFromAReusedBuffer) {
    QStringList journal;
    SelfObserving first(&journal);
    SelfObserving second(&journal);
    first.addObserver(&first, "title", 0, nullptr);
    second.addObserver(&second, "title", 0, nullptr);

    char key[8] = "title";
    EXPECT_TRUE(first.hasObserversForKey(key));
    EXPECT_TRUE(second.hasObserversForKey(key));
    std::strcpy(key, "frame");
    EXPECT_FALSE(first.hasObserversForKey(key));
    EXPECT_FALSE(second.hasObserversForKey("frame"));
    EXPECT_TRUE(second.hasObserversForKey("title"));
    std::strcpy(key, "title");
    EXPECT_TRUE(first.hasObserversForKey(key));

    first.removeObserver(&first, "title", nullptr);
    second.removeObserver(&second, "title", nullptr);
}
