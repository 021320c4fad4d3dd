// A QAbstractItemModel as the list's data source and delegate: what the list's commands do reaches the
// model, what the model does from elsewhere reaches the list, and after every step the rows show exactly the
// model's rows. Both a QStandardItemModel (which cannot move rows) and a model of our own (which can, and
// can refuse changes) are driven, each watched by QAbstractItemModelTester.
#include "KRCheckListModelAdapter.h"

#include "KRCheckListViewHostTestSupport.h"

#include "Platform/KRPasteboard.h"
#include "Text/KRKeyBindings.h"

#include <QAbstractItemModelTester>
#include <QAbstractListModel>
#include <QStandardItemModel>

#include <gtest/gtest.h>

#include <memory>
#include <vector>

using namespace KRCheckListViewTesting;

namespace {

// Titles, check states and identifiers in rows; moves rows, and refuses what it is told to refuse.
class ChecklistModel : public QAbstractListModel {
public:
    struct Row {
        QString title;
        Qt::CheckState state = Qt::Unchecked;
        int identifier = 0;
    };
    static constexpr int IdentifierRole = Qt::UserRole + 1;

    int rowCount(const QModelIndex& parent = QModelIndex()) const override {
        return parent.isValid() ? 0 : static_cast<int>(rows.size());
    }
    QVariant data(const QModelIndex& index, int role) const override {
        if (!checkIndex(index, CheckIndexOption::IndexIsValid | CheckIndexOption::ParentIsInvalid)) {
            return {};
        }
        const Row& row = rows[static_cast<std::size_t>(index.row())];
        switch (role) {
        case Qt::DisplayRole:
        case Qt::EditRole:
            return row.title;
        case Qt::CheckStateRole:
            return static_cast<int>(row.state);
        case IdentifierRole:
            return row.identifier;
        default:
            return {};
        }
    }
    Qt::ItemFlags flags(const QModelIndex& index) const override {
        if (!index.isValid()) {
            return QAbstractListModel::flags(index);
        }
        return QAbstractListModel::flags(index) | Qt::ItemIsEditable | Qt::ItemIsUserCheckable;
    }
    bool setData(const QModelIndex& index, const QVariant& value, int role) override {
        if (refuseChanges || !checkIndex(index, CheckIndexOption::IndexIsValid)) {
            return false;
        }
        Row& row = rows[static_cast<std::size_t>(index.row())];
        if (role == Qt::EditRole) {
            row.title = value.toString();
        } else if (role == Qt::CheckStateRole) {
            row.state = static_cast<Qt::CheckState>(value.toInt());
        } else {
            return false;
        }
        emit dataChanged(index, index, {role});
        return true;
    }
    bool insertRows(int row, int count, const QModelIndex& parent = QModelIndex()) override {
        if (refuseChanges || parent.isValid() || row < 0 || row > rowCount() || count <= 0) {
            return false;
        }
        beginInsertRows(parent, row, row + count - 1);
        for (int added = 0; added < count; ++added) {
            rows.insert(rows.begin() + row, Row{QString(), Qt::Unchecked, nextIdentifier++});
        }
        endInsertRows();
        return true;
    }
    bool removeRows(int row, int count, const QModelIndex& parent = QModelIndex()) override {
        if (refuseChanges || parent.isValid() || row < 0 || count <= 0 || row + count > rowCount()) {
            return false;
        }
        beginRemoveRows(parent, row, row + count - 1);
        rows.erase(rows.begin() + row, rows.begin() + row + count);
        endRemoveRows();
        return true;
    }
    bool moveRows(const QModelIndex& sourceParent, int sourceRow, int count,
                  const QModelIndex& destinationParent, int destinationChild) override {
        if (refuseChanges || !beginMoveRows(sourceParent, sourceRow, sourceRow + count - 1, destinationParent,
                                            destinationChild)) {
            return false;
        }
        std::vector<Row> moved(rows.begin() + sourceRow, rows.begin() + sourceRow + count);
        rows.erase(rows.begin() + sourceRow, rows.begin() + sourceRow + count);
        const int target = destinationChild > sourceRow ? destinationChild - count : destinationChild;
        rows.insert(rows.begin() + target, moved.begin(), moved.end());
        endMoveRows();
        return true;
    }
    void append(const QString& title, Qt::CheckState state) {
        beginInsertRows(QModelIndex(), rowCount(), rowCount());
        rows.push_back(Row{title, state, nextIdentifier++});
        endInsertRows();
    }
    void replaceAll(const QStringList& titles) {
        beginResetModel();
        rows.clear();
        for (const QString& title : titles) {
            rows.push_back(Row{title, Qt::Unchecked, nextIdentifier++});
        }
        endResetModel();
    }

    std::vector<Row> rows;
    bool refuseChanges = false;
    int nextIdentifier = 1;
};

enum class ModelKind { Standard, OwnModel };

// What QAbstractItemModelTester found wrong with a model while the list drove it.
QStringList& modelTesterFailures() {
    static QStringList failures;
    return failures;
}

void recordModelTesterFailures(QtMsgType, const QMessageLogContext& context, const QString& message) {
    if (context.category && QLatin1String(context.category) == QLatin1String("qt.modeltest")) {
        modelTesterFailures() << message;
    }
}

class KRCheckListModelAdapterTests : public KRCheckListViewHostTestCase,
                                     public ::testing::WithParamInterface<ModelKind> {
protected:
    void SetUp() override {
        KRCheckListViewHostTestCase::SetUp();
        KRKeyBindings::setPlatformOverride(KRKeyBindings::Platform::Other);
        KRPasteboard::setGeneralPasteboard(KRPasteboard::makeInMemory());
        const QStringList titles = {QStringLiteral("Milk"), QStringLiteral("Bread"), QStringLiteral("Eggs"),
                                    QStringLiteral("Butter")};
        const Qt::CheckState states[] = {Qt::Unchecked, Qt::Checked, Qt::PartiallyChecked, Qt::Unchecked};
        if (GetParam() == ModelKind::Standard) {
            for (int row = 0; row < titles.size(); ++row) {
                auto* item = new QStandardItem(titles[row]);
                item->setCheckState(states[row]);
                standard.appendRow(item);
            }
            model = &standard;
        } else {
            for (int row = 0; row < titles.size(); ++row) {
                own.append(titles[row], states[row]);
            }
            model = &own;
        }
        modelTesterFailures().clear();
        m_previousMessageHandler = qInstallMessageHandler(recordModelTesterFailures);
        tester = std::make_unique<QAbstractItemModelTester>(
            model, QAbstractItemModelTester::FailureReportingMode::Warning);
        adapter->setModel(model);
        adapter->setCheckListView(list);
        settle();
    }
    void TearDown() override {
        tester.reset();
        qInstallMessageHandler(m_previousMessageHandler);
        EXPECT_TRUE(modelTesterFailures().isEmpty())
            << modelTesterFailures().join(QLatin1Char('\n')).toStdString();
        KRPasteboard::setGeneralPasteboard(nullptr);
        KRKeyBindings::setPlatformOverride(std::nullopt);
        KRCheckListViewHostTestCase::TearDown();
    }

    QStringList modelTitles() const {
        QStringList titles;
        for (int row = 0; row < model->rowCount(); ++row) {
            titles << model->index(row, 0).data().toString();
        }
        return titles;
    }
    std::vector<KRUInteger> modelStatuses() const {
        std::vector<KRUInteger> statuses;
        for (int row = 0; row < model->rowCount(); ++row) {
            statuses.push_back(
                KRCheckListModelAdapter::statusForCheckState(model->index(row, 0).data(Qt::CheckStateRole)));
        }
        return statuses;
    }
    std::vector<KRUInteger> rowStatuses() const {
        std::vector<KRUInteger> statuses;
        for (const std::shared_ptr<KRCheckListItemView>& row : list->checkListItemViews()) {
            statuses.push_back(row->status());
        }
        return statuses;
    }
    // The rows show the model's rows, titles and statuses, in its order.
    void expectRowsShowTheModel(const char* step) {
        settle();
        EXPECT_EQ(rowTitles(), modelTitles()) << step;
        EXPECT_EQ(rowStatuses(), modelStatuses()) << step;
        EXPECT_EQ(list->numberOfItems(), static_cast<KRUInteger>(model->rowCount())) << step;
    }
    void editRow(KRUInteger index) {
        click(pointInTitleOfRow(index, 2.0));
        ASSERT_EQ(list->indexForEditedItem(), index);
    }

    QStandardItemModel standard;
    ChecklistModel own;
    QAbstractItemModel* model = nullptr;
    std::unique_ptr<QAbstractItemModelTester> tester;
    std::shared_ptr<KRCheckListModelAdapter> adapter = std::make_shared<KRCheckListModelAdapter>();

private:
    QtMessageHandler m_previousMessageHandler = nullptr;
};

TEST_P(KRCheckListModelAdapterTests, ShowsTheModelsRowsWithTheirStatuses) {
    EXPECT_EQ(rowTitles(), (QStringList{QStringLiteral("Milk"), QStringLiteral("Bread"),
                                        QStringLiteral("Eggs"), QStringLiteral("Butter")}));
    EXPECT_EQ(rowStatuses(), (std::vector<KRUInteger>{0, 1, 2, 0}));
    expectRowsShowTheModel("reload");
}

TEST_P(KRCheckListModelAdapterTests, TypedTitlesAndToggledStatusesReachTheModel) {
    editRow(0);
    pressKey(Qt::Key_End);
    typeText(QStringLiteral(" and honey"));
    EXPECT_EQ(model->index(0, 0).data().toString(), QStringLiteral("Milk and honey"));
    expectRowsShowTheModel("typing");

    list->toggleEditedOrSelectedItemsCompleted();
    EXPECT_EQ(model->index(0, 0).data(Qt::CheckStateRole).toInt(), static_cast<int>(Qt::Checked));
    expectRowsShowTheModel("toggle completed");
    list->toggleEditedOrSelectedItemsCanceled();
    EXPECT_EQ(model->index(0, 0).data(Qt::CheckStateRole).toInt(), static_cast<int>(Qt::PartiallyChecked));
    expectRowsShowTheModel("toggle canceled");
}

TEST_P(KRCheckListModelAdapterTests, ReturnSplitsAndBackspaceJoinsRowsOfTheModel) {
    editRow(1);
    pressKey(Qt::Key_End);
    pressKey(Qt::Key_Left);
    pressKey(Qt::Key_Left);
    pressKey(Qt::Key_Return, Qt::NoModifier, QStringLiteral("\r"));
    EXPECT_EQ(modelTitles(), (QStringList{QStringLiteral("Milk"), QStringLiteral("Bre"), QStringLiteral("ad"),
                                          QStringLiteral("Eggs"), QStringLiteral("Butter")}));
    expectRowsShowTheModel("split");
    pressKey(Qt::Key_Backspace, Qt::NoModifier, QStringLiteral("\b"));
    EXPECT_EQ(modelTitles(), (QStringList{QStringLiteral("Milk"), QStringLiteral("Bread"),
                                          QStringLiteral("Eggs"), QStringLiteral("Butter")}));
    EXPECT_EQ(list->indexForEditedItem(), 1u);
    expectRowsShowTheModel("join");
}

TEST_P(KRCheckListModelAdapterTests, DeletingAndMovingSelectedItemsChangeTheModel) {
    list->selectItemsAtIndexesByExtendingSelection(KRIndexSet(KRRange{1, 2}), false);
    settle();
    list->moveEditedOrSelectedItemsDown();
    KRClock::advance(1.0);
    EXPECT_EQ(modelTitles(), (QStringList{QStringLiteral("Milk"), QStringLiteral("Butter"),
                                          QStringLiteral("Bread"), QStringLiteral("Eggs")}));
    expectRowsShowTheModel("move down");
    list->moveEditedOrSelectedItemsTop();
    KRClock::advance(1.0);
    EXPECT_EQ(modelTitles(), (QStringList{QStringLiteral("Bread"), QStringLiteral("Eggs"),
                                          QStringLiteral("Milk"), QStringLiteral("Butter")}));
    expectRowsShowTheModel("move to top");
    list->deleteEditedOrSelectedItemsBackward();
    EXPECT_EQ(modelTitles(), (QStringList{QStringLiteral("Milk"), QStringLiteral("Butter")}));
    expectRowsShowTheModel("delete");
}

TEST_P(KRCheckListModelAdapterTests, PastedLinesBecomeRowsOfTheModel) {
    KRPasteboard::generalPasteboard()->declareTypes({KRPasteboardTypeString}, nullptr);
    KRPasteboard::generalPasteboard()->setString(QStringLiteral("- Tea\n+ Jam\n"), KRPasteboardTypeString);
    list->selectItemsAtIndexesByExtendingSelection(KRIndexSet(3), false);
    settle();
    list->paste();
    settle();
    EXPECT_EQ(modelTitles(),
              (QStringList{QStringLiteral("Milk"), QStringLiteral("Bread"), QStringLiteral("Eggs"),
                           QStringLiteral("Tea"), QStringLiteral("Jam")}));
    EXPECT_EQ(modelStatuses(), (std::vector<KRUInteger>{0, 1, 2, 0, 1}));
    expectRowsShowTheModel("paste");
}

TEST_P(KRCheckListModelAdapterTests, ChangesMadeToTheModelElsewhereShowAtOnce) {
    model->insertRows(1, 2);
    model->setData(model->index(1, 0), QStringLiteral("Cheese"), Qt::EditRole);
    model->setData(model->index(2, 0), QStringLiteral("Apples"), Qt::EditRole);
    model->setData(model->index(2, 0), static_cast<int>(Qt::Checked), Qt::CheckStateRole);
    expectRowsShowTheModel("insert and set data");
    model->removeRows(0, 2);
    expectRowsShowTheModel("remove");
    if (GetParam() == ModelKind::OwnModel) {
        ASSERT_TRUE(own.moveRows(QModelIndex(), 0, 2, QModelIndex(), 4));
        expectRowsShowTheModel("move");
        own.replaceAll({QStringLiteral("One"), QStringLiteral("Two")});
        expectRowsShowTheModel("reset");
    } else {
        standard.sort(0);
        expectRowsShowTheModel("sort (a layout change)");
        standard.clear();
        expectRowsShowTheModel("clear (a reset)");
        standard.appendRow(new QStandardItem(QStringLiteral("Again")));
        expectRowsShowTheModel("append");
    }
}

// An item keeps its identifier through a move, so the list moves its row instead of making a new one.
TEST_P(KRCheckListModelAdapterTests, IdentifiersFollowTheRows) {
    const QJsonValue eggs = adapter->checkListViewIdentifierForItemAtIndex(list.get(), 2);
    const QJsonValue milk = adapter->checkListViewIdentifierForItemAtIndex(list.get(), 0);
    EXPECT_NE(eggs, milk);
    list->selectItemsAtIndexesByExtendingSelection(KRIndexSet(2), false);
    list->moveEditedOrSelectedItemsTop();
    KRClock::advance(1.0);
    settle();
    EXPECT_EQ(adapter->checkListViewIdentifierForItemAtIndex(list.get(), 0), eggs);
    EXPECT_EQ(adapter->checkListViewIdentifierForItemAtIndex(list.get(), 1), milk);
    EXPECT_EQ(list->indexesForSelectedItems(), KRIndexSet(0)) << "the moved row is still the selected one";
}

std::string modelName(const ::testing::TestParamInfo<ModelKind>& kind) {
    return kind.param == ModelKind::Standard ? "QStandardItemModel" : "OwnModel";
}

INSTANTIATE_TEST_SUITE_P(Models, KRCheckListModelAdapterTests,
                         ::testing::Values(ModelKind::Standard, ModelKind::OwnModel), modelName);

// A model that refuses leaves the list as it was.
class KRCheckListModelAdapterRefusalTests : public KRCheckListViewHostTestCase {
protected:
    void SetUp() override {
        KRCheckListViewHostTestCase::SetUp();
        KRKeyBindings::setPlatformOverride(KRKeyBindings::Platform::Other);
        own.append(QStringLiteral("Milk"), Qt::Unchecked);
        own.append(QStringLiteral("Bread"), Qt::Checked);
        adapter->setModel(&own);
        adapter->setCheckListView(list);
        settle();
    }
    void TearDown() override {
        KRKeyBindings::setPlatformOverride(std::nullopt);
        KRCheckListViewHostTestCase::TearDown();
    }

    ChecklistModel own;
    std::shared_ptr<KRCheckListModelAdapter> adapter = std::make_shared<KRCheckListModelAdapter>();
};

TEST_F(KRCheckListModelAdapterRefusalTests, RefusedInsertsRemovalsAndTitlesLeaveTheListAsItWas) {
    click(pointInTitleOfRow(0, 2.0));
    pressKey(Qt::Key_End);
    own.refuseChanges = true;
    pressKey(Qt::Key_Return, Qt::NoModifier, QStringLiteral("\r"));
    EXPECT_EQ(rowTitles(), (QStringList{QStringLiteral("Milk"), QStringLiteral("Bread")}));
    typeText(QStringLiteral("x"));
    EXPECT_EQ(own.rows[0].title, QStringLiteral("Milk"));
    EXPECT_EQ(rowTitles(), (QStringList{QStringLiteral("Milk"), QStringLiteral("Bread")}));
    list->endEditing();
    list->selectItemsAtIndexesByExtendingSelection(KRIndexSet(1), false);
    list->deleteEditedOrSelectedItemsBackward();
    settle();
    EXPECT_EQ(rowTitles(), (QStringList{QStringLiteral("Milk"), QStringLiteral("Bread")}));
    EXPECT_EQ(own.rows.size(), 2u);
}

} // namespace
