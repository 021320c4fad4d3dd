#include "Foundation/KRWeakDelegate.h"

#include <gtest/gtest.h>

#include <memory>

namespace {

class Listener {
public:
    virtual ~Listener() = default;
    virtual int answer() { return 0; }
};

class ListeningObject : public KRObject, public Listener {
public:
    int answer() override { return 42; }
};

TEST(KRWeakDelegateTests, StartsEmpty) {
    KRWeakDelegate<Listener> delegate;
    EXPECT_EQ(delegate.get(), nullptr);
}

TEST(KRWeakDelegateTests, AnswersTheDelegateWhileItsOwnerLives) {
    ListeningObject object;
    KRWeakDelegate<Listener> delegate;
    delegate.reset(&object, &object);
    ASSERT_EQ(delegate.get(), static_cast<Listener*>(&object));
    EXPECT_EQ(delegate.get()->answer(), 42);
}

TEST(KRWeakDelegateTests, ReadsAsNullOnceTheOwnerIsDestroyed) {
    KRWeakDelegate<Listener> delegate;
    {
        auto object = std::make_unique<ListeningObject>();
        delegate.reset(object.get(), object.get());
        EXPECT_NE(delegate.get(), nullptr);
    }
    EXPECT_EQ(delegate.get(), nullptr);
}

TEST(KRWeakDelegateTests, WithoutAnOwnerTheDelegateStaysUntilCleared) {
    Listener plain;
    KRWeakDelegate<Listener> delegate;
    delegate.reset(&plain, nullptr);
    EXPECT_EQ(delegate.get(), &plain);
    delegate.reset(nullptr, nullptr);
    EXPECT_EQ(delegate.get(), nullptr);
}

TEST(KRWeakDelegateTests, ReplacingTheDelegateForgetsTheFormerOwner) {
    KRWeakDelegate<Listener> delegate;
    ListeningObject kept;
    {
        auto former = std::make_unique<ListeningObject>();
        delegate.reset(former.get(), former.get());
        delegate.reset(&kept, &kept);
    }
    EXPECT_EQ(delegate.get(), static_cast<Listener*>(&kept));
}

} // namespace

TEST(KRWeakDelegateTests, HoldsNoMoreThanAPointerAndAWeakToken) {
    // Rows hold several of these (their own, their buttons', their title's): the watched flag rides on the
    // pointer.
    EXPECT_LE(sizeof(KRWeakDelegate<Listener>), sizeof(void*) + sizeof(std::weak_ptr<KRObject*>));
}
