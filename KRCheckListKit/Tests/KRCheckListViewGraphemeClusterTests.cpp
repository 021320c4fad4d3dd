// Splitting a title with Return, joining two with Backspace or Delete, and carrying the caret from row to
// row never cut a user-perceived character in two: the places the list computes stay in UTF-16 units and
// land beside a grapheme cluster, never inside one.
#include "KRCheckListView.h"

#include "KRCheckListViewHostTestSupport.h"

#include "Text/KRKeyBindings.h"

#include <QTextBoundaryFinder>

#include <gtest/gtest.h>

#include <ostream>
#include <string>

using namespace KRCheckListViewTesting;

namespace {

struct Cluster {
    const char* name;
    QString text;
};

void PrintTo(const Cluster& cluster, std::ostream* out) {
    *out << cluster.name;
}

const Cluster kClusters[] = {
    {"EmojiWithSkinTone", QString::fromUtf8("\xF0\x9F\x91\x8D\xF0\x9F\x8F\xBD")},
    {"ZeroWidthJoinedFamily",
     QString::fromUtf8("\xF0\x9F\x91\xA8\xE2\x80\x8D\xF0\x9F\x91\xA9\xE2\x80\x8D\xF0\x9F\x91\xA7")},
    {"Flag", QString::fromUtf8("\xF0\x9F\x87\xA9\xF0\x9F\x87\xAA")},
    {"CombiningAccent", QStringLiteral("e\u0301")},
    {"HangulJamo", QStringLiteral("\u1100\u1161\u11A8")},
    {"SurrogatePair", QString::fromUtf8("\xF0\x9D\x84\x9E")},
};

bool isClusterBoundary(const QString& text, KRUInteger position) {
    QTextBoundaryFinder finder(QTextBoundaryFinder::Grapheme, text);
    finder.setPosition(static_cast<qsizetype>(position));
    return finder.isAtBoundary();
}

class KRCheckListViewGraphemeClusterTests : public KRCheckListViewHostTestCase,
                                            public ::testing::WithParamInterface<Cluster> {
protected:
    void SetUp() override {
        KRCheckListViewHostTestCase::SetUp();
        KRKeyBindings::setPlatformOverride(KRKeyBindings::Platform::Other);
    }
    void TearDown() override {
        KRKeyBindings::setPlatformOverride(std::nullopt);
        KRCheckListViewHostTestCase::TearDown();
    }

    const QString& cluster() const { return GetParam().text; }
    KRUInteger clusterLength() const { return static_cast<KRUInteger>(cluster().size()); }
    KRRange caret(KRUInteger location) const { return KRMakeRange(location, 0); }

    void editRow(KRUInteger index) {
        click(pointInTitleOfRow(index, 2.0));
        ASSERT_EQ(list->indexForEditedItem(), index);
    }
};

TEST_P(KRCheckListViewGraphemeClusterTests, ReturnAfterTheClusterSplitsBesideIt) {
    showTitles({QStringLiteral("a") + cluster() + QStringLiteral("b")});
    editRow(0);
    pressKey(Qt::Key_End);
    pressKey(Qt::Key_Left);
    ASSERT_EQ(editedSelection(), caret(clusterLength() + 1));
    pressKey(Qt::Key_Return, Qt::NoModifier, QStringLiteral("\r"));
    EXPECT_EQ(rowTitles(), QStringList({QStringLiteral("a") + cluster(), QStringLiteral("b")}));
    EXPECT_EQ(list->indexForEditedItem(), 1u);
    EXPECT_EQ(editedSelection(), caret(0));
}

TEST_P(KRCheckListViewGraphemeClusterTests, ReturnBeforeTheClusterSplitsBesideIt) {
    showTitles({QStringLiteral("a") + cluster() + QStringLiteral("b")});
    editRow(0);
    pressKey(Qt::Key_End);
    pressKey(Qt::Key_Left);
    pressKey(Qt::Key_Left);
    ASSERT_EQ(editedSelection(), caret(1));
    pressKey(Qt::Key_Return, Qt::NoModifier, QStringLiteral("\r"));
    EXPECT_EQ(rowTitles(), QStringList({QStringLiteral("a"), cluster() + QStringLiteral("b")}));
}

TEST_P(KRCheckListViewGraphemeClusterTests, ReturnWithTheClusterSelectedDropsItWhole) {
    showTitles({QStringLiteral("a") + cluster() + QStringLiteral("b")});
    editRow(0);
    pressKey(Qt::Key_End);
    pressKey(Qt::Key_Left);
    pressKey(Qt::Key_Left, Qt::ShiftModifier);
    ASSERT_EQ(editedSelection(), KRMakeRange(1, clusterLength()));
    pressKey(Qt::Key_Return, Qt::NoModifier, QStringLiteral("\r"));
    EXPECT_EQ(rowTitles(), QStringList({QStringLiteral("a"), QStringLiteral("b")}));
}

TEST_P(KRCheckListViewGraphemeClusterTests, BackspaceJoinsAfterTheCluster) {
    showTitles({QStringLiteral("a") + cluster(), QStringLiteral("b")});
    editRow(1);
    pressKey(Qt::Key_Home);
    pressKey(Qt::Key_Backspace, Qt::NoModifier, QStringLiteral("\b"));
    EXPECT_EQ(rowTitles(), QStringList({QStringLiteral("a") + cluster() + QStringLiteral("b")}));
    EXPECT_EQ(list->indexForEditedItem(), 0u);
    EXPECT_EQ(editedSelection(), caret(clusterLength() + 1));
}

TEST_P(KRCheckListViewGraphemeClusterTests, DeleteJoinsBeforeTheCluster) {
    showTitles({QStringLiteral("a"), cluster() + QStringLiteral("b")});
    editRow(0);
    pressKey(Qt::Key_End);
    pressKey(Qt::Key_Delete);
    EXPECT_EQ(rowTitles(), QStringList({QStringLiteral("a") + cluster() + QStringLiteral("b")}));
    EXPECT_EQ(editedSelection(), caret(1));
}

// Carried up from the row below at any x, the caret lands beside a cluster of the row above.
TEST_P(KRCheckListViewGraphemeClusterTests, TheCaretCarriedFromRowToRowLandsBesideACluster) {
    const QString clusters = cluster().repeated(6);
    showTitles({clusters, QStringLiteral("abcdefghijklmnopqrstuvwx")});
    for (double x = 1.0; x < 60.0; x += 3.0) {
        click(pointInTitleOfRow(1, x));
        ASSERT_EQ(list->indexForEditedItem(), 1u);
        pressKey(Qt::Key_Up);
        ASSERT_EQ(list->indexForEditedItem(), 0u);
        EXPECT_TRUE(isClusterBoundary(clusters, editedSelection().location))
            << "from x " << x << " the caret landed at " << editedSelection().location;
        EXPECT_EQ(editedSelection().length, 0u);
    }
}

std::string clusterTestName(const ::testing::TestParamInfo<Cluster>& info) {
    return info.param.name;
}

INSTANTIATE_TEST_SUITE_P(EveryKindOfCluster, KRCheckListViewGraphemeClusterTests,
                         ::testing::ValuesIn(kClusters), clusterTestName);

// Two titles whose meeting point falls inside one cluster once joined: a base letter and a combining
// accent, or Hangul jamo that join into one syllable. The caret goes after the cluster that formed.
struct Join {
    const char* name;
    QString above;
    QString below;
    KRUInteger caretAfterJoin;
};

void PrintTo(const Join& join, std::ostream* out) {
    *out << join.name;
}

class KRCheckListViewJoinInsideAClusterTests : public KRCheckListViewHostTestCase,
                                               public ::testing::WithParamInterface<Join> {
protected:
    void SetUp() override {
        KRCheckListViewHostTestCase::SetUp();
        KRKeyBindings::setPlatformOverride(KRKeyBindings::Platform::Other);
        showTitles({GetParam().above, GetParam().below});
    }
    void TearDown() override {
        KRKeyBindings::setPlatformOverride(std::nullopt);
        KRCheckListViewHostTestCase::TearDown();
    }
};

TEST_P(KRCheckListViewJoinInsideAClusterTests, BackspacePutsTheCaretAfterTheClusterThatFormed) {
    click(pointInTitleOfRow(1, 2.0));
    pressKey(Qt::Key_Home);
    pressKey(Qt::Key_Backspace, Qt::NoModifier, QStringLiteral("\b"));
    EXPECT_EQ(rowTitles(), QStringList({GetParam().above + GetParam().below}));
    EXPECT_EQ(editedSelection(), KRMakeRange(GetParam().caretAfterJoin, 0));
}

TEST_P(KRCheckListViewJoinInsideAClusterTests, DeletePutsTheCaretAfterTheClusterThatFormed) {
    click(pointInTitleOfRow(0, 2.0));
    pressKey(Qt::Key_End);
    pressKey(Qt::Key_Delete);
    EXPECT_EQ(rowTitles(), QStringList({GetParam().above + GetParam().below}));
    EXPECT_EQ(editedSelection(), KRMakeRange(GetParam().caretAfterJoin, 0));
}

std::string joinTestName(const ::testing::TestParamInfo<Join>& info) {
    return info.param.name;
}

INSTANTIATE_TEST_SUITE_P(
    Joins, KRCheckListViewJoinInsideAClusterTests,
    ::testing::Values(Join{"CombiningAccent", QStringLiteral("ae"), QStringLiteral("\u0301b"), 3},
                      Join{"HangulJamo", QStringLiteral("x\u1100"), QStringLiteral("\u1161\u11A8y"), 4},
                      Join{"SkinToneModifier", QString::fromUtf8("a\xF0\x9F\x91\x8D"),
                           QString::fromUtf8("\xF0\x9F\x8F\xBD"
                                             "b"),
                           5}),
    joinTestName);

} // namespace
