// What a row costs in memory at rest, and the ownership that keeps it small: the row's own controls refer
// back to it without watching its lifetime, because the row clears them itself when it goes.
#include "KRCheckListItemView.h"

#include <gtest/gtest.h>

#include <malloc.h>

#include <memory>
#include <vector>

namespace {

constexpr double kRowWidth = 400.0;
constexpr double kRowHeight = 28.0;

// A row as a list makes it: created, updated once and laid out, with an empty title.
std::shared_ptr<KRCheckListItemView> makeRestingRow() {
    auto row = std::make_shared<KRCheckListItemView>(KRRect{0.0, 0.0, kRowWidth, kRowHeight});
    row->update([&] {
        row->setMinHeight(kRowHeight);
        row->setTitle(QString());
        row->setStatus(0);
    });
    row->setFrameSize(row->sizeThatFits(KRSize{kRowWidth, kRowHeight}));
    row->layoutIfNeeded();
    return row;
}

bool allocatorCountsBytesInUse() {
#if defined(__SANITIZE_ADDRESS__)
    return false;
#elif defined(__has_feature)
#if __has_feature(address_sanitizer)
    return false;
#else
    return true;
#endif
#else
    return true;
#endif
}

TEST(KRCheckListItemViewFootprintTests, RowAtRestStaysWithinThreeKilobytes) {
    if (!allocatorCountsBytesInUse()) {
        GTEST_SKIP() << "the sanitizer's allocator keeps no count of bytes in use";
    }
    // The shared blocks (looks, attribute sets, images, registrations) are made by the first rows.
    std::vector<std::shared_ptr<KRCheckListItemView>> rows;
    rows.push_back(makeRestingRow());
    rows.push_back(makeRestingRow());
    constexpr int count = 64;
    rows.reserve(rows.size() + count);

    const auto before = mallinfo2().uordblks;
    for (int i = 0; i < count; ++i) {
        rows.push_back(makeRestingRow());
    }
    const auto after = mallinfo2().uordblks;

    ASSERT_GT(after, before);
    const double bytesPerRow = static_cast<double>(after - before) / count;
    RecordProperty("bytesPerRow", static_cast<int>(bytesPerRow));
    EXPECT_LE(bytesPerRow, 3072.0);
}

TEST(KRCheckListItemViewFootprintTests, CheckBoxTargetsTheRowAndForgetsItWhenTheRowGoes) {
    auto row = makeRestingRow();
    const std::shared_ptr<KRButtonView> checkBox = row->checkBoxButtonView();
    EXPECT_EQ(checkBox->target(), static_cast<KRObject*>(row.get()));
    EXPECT_EQ(checkBox->delegate(), static_cast<KRButtonViewDelegate*>(row.get()));

    row.reset();

    EXPECT_EQ(checkBox->target(), nullptr);
    EXPECT_EQ(checkBox->delegate(), nullptr);
    checkBox->performClick(); // reaches nobody
}

TEST(KRCheckListItemViewFootprintTests, TitleFieldAndHandleForgetTheRowWhenItGoes) {
    auto row = makeRestingRow();
    const std::shared_ptr<KRCheckListItemTitleTextField> title = row->titleTextField();
    const std::shared_ptr<KRButtonView> handle = row->handleButtonView();
    const std::shared_ptr<KRCheckListItemTitleTextFieldCell> cell = title->titleTextFieldCell();
    EXPECT_EQ(title->delegate(), static_cast<KRCheckListItemTitleTextFieldDelegate*>(row.get()));
    EXPECT_EQ(cell->delegate(), static_cast<KRCheckListItemTitleTextFieldCellDelegate*>(title.get()));

    row.reset();

    EXPECT_EQ(title->delegate(), nullptr);
    EXPECT_EQ(handle->delegate(), nullptr);
    EXPECT_EQ(cell->delegate(), static_cast<KRCheckListItemTitleTextFieldCellDelegate*>(title.get()))
        << "the field still owns its cell";
}

TEST(KRCheckListItemViewFootprintTests, SettingThePlaceholderKeepsTheRowAsTheTitleDelegate) {
    auto row = makeRestingRow();
    row->setPlaceholder(QStringLiteral("New item"));
    EXPECT_EQ(row->titleTextField()->delegate(),
              static_cast<KRCheckListItemTitleTextFieldDelegate*>(row.get()));
    const std::shared_ptr<KRCheckListItemTitleTextField> title = row->titleTextField();
    row.reset();
    EXPECT_EQ(title->delegate(), nullptr);
}

TEST(KRCheckListItemViewFootprintTests, AFieldGoingAwayClearsItsCellsDelegate) {
    std::shared_ptr<KRCheckListItemTitleTextFieldCell> cell;
    {
        auto field = std::make_shared<KRCheckListItemTitleTextField>();
        cell = field->titleTextFieldCell();
        EXPECT_EQ(cell->delegate(), static_cast<KRCheckListItemTitleTextFieldCellDelegate*>(field.get()));
    }
    EXPECT_EQ(cell->delegate(), nullptr);
}

} // namespace
