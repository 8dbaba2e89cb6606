#include "app/marking/collection_chooser.h"

#include <QComboBox>
#include <QHBoxLayout>
#include <QKeyEvent>
#include <QMenu>
#include <QPointer>
#include <QStandardItemModel>
#include <QToolButton>
#include <algorithm>

#include "base/shortened.h"

#include "ports/panels.h"

#include "app/theme/theme.h"
#include "app/widgets/controls.h"
#include "app/widgets/qt_text.h"
#include "core/collections/tag_library_manager.h"
#include "core/marking/marking_flow.h"

namespace tembrix {
namespace {

constexpr int kindRole = Qt::UserRole;
// The id of a user collection or the name of a standard one; the displayed text may be shortened.
constexpr int keyRole = Qt::UserRole + 1;
constexpr int standardKind = 1;
constexpr int userKind = 2;

// The collection can be changed in the open list only, not by the wheel, the arrow keys or typing.
class Names final : public QComboBox {
  public:
    using QComboBox::QComboBox;

  protected:
    void wheelEvent(QWheelEvent* event) override { event->ignore(); }
    void keyPressEvent(QKeyEvent* event) override {
        switch (event->key()) {
            case Qt::Key_Up:
            case Qt::Key_Down:
            case Qt::Key_Return:
            case Qt::Key_Enter:
                showPopup();
                break;
            default:
                event->ignore();  // typing does not change the collection either
        }
    }
};

}  // namespace

CollectionChooser::CollectionChooser(const TagPanelServices& services, MarkingFlow& flow,
                                     QWidget* parent)
    : QWidget(parent),
      services_(services),
      flow_(flow),
      names_(new Names(this)),
      delete_(makeIconButton(services.texts, "tagLibraryDeleteCollection", "edit-delete", this)),
      deletable_(new QMenu(delete_)) {
    nameControl(names_, services.texts, "tagLibraryCollections");
    names_->setSizeAdjustPolicy(QComboBox::AdjustToMinimumContentsLengthWithIcon);
    names_->setMinimumContentsLength(12);
    names_->setMaxVisibleItems(20);
    connect(names_, &QComboBox::activated, this, &CollectionChooser::choose);
    nameControl(deletable_, services.texts, "tagLibraryDeleteCollection");
    connect(delete_, &QToolButton::clicked, this, &CollectionChooser::chooseToDelete);
    auto* row = new QHBoxLayout(this);
    row->setContentsMargins(0, 0, 0, 0);
    row->setSpacing(theme::unit);
    row->addWidget(names_, 1);
    row->addWidget(delete_);

    auto& library = services.tagLibrary;
    const auto on = [this](auto& published, void (CollectionChooser::*react)()) {
        subscriptions_.push_back(
            published.observe([this, react](const auto&) { (this->*react)(); }));
    };
    on(library.standardCollections, &CollectionChooser::rebuild);
    subscriptions_.push_back(
        flow.userCollections.observe([this](const std::vector<CollectionInfo>& now) {
            // Rebuilding an unchanged list would close its popup.
            if (now != shown_)
                rebuild();
        }));
    on(library.currentCollectionType, &CollectionChooser::refresh);
    on(library.selectedStandardCollectionName, &CollectionChooser::refresh);
    on(flow.isLoadingCollections, &CollectionChooser::refresh);
    on(flow.activeIntervalTags, &CollectionChooser::refresh);
    rebuild();
}

void CollectionChooser::rebuild() {
    names_->clear();
    const auto add = [&](const std::string& name, int kind, const std::string& key) {
        names_->addItem(qtext(shortened(name)));
        names_->setItemData(names_->count() - 1, kind, kindRole);
        names_->setItemData(names_->count() - 1, qtext(key), keyRole);
    };
    for (const auto& collection : *services_.tagLibrary.standardCollections)
        add(collection.name, standardKind, collection.name);
    if (names_->count() > 0 && !flow_.userCollections->empty())
        names_->insertSeparator(names_->count());
    deletable_->clear();
    shown_ = *flow_.userCollections;
    for (const auto& collection : shown_) {
        add(collection.name, userKind, collection.id);
        auto* action = deletable_->addAction(qtext(shortened(collection.name)).replace('&', "&&"));
        action->setObjectName(qtext(collection.id));
        connect(action, &QAction::triggered, this, [this, collection] { askToDelete(collection); });
    }
    refresh();
}

void CollectionChooser::refresh() {
    const auto& library = services_.tagLibrary;
    const auto& type = *library.currentCollectionType;
    const std::string name =
        type.isUser() ? type.name : library.selectedStandardCollectionName->value_or("");
    const QString key = qtext(type.isUser() ? type.id : name);
    // A standard collection cannot be chosen while an interval is open or a collection is loading:
    // open intervals belong to their collection, and loading replaces the lists.
    const bool standardAllowed = flow_.activeIntervalTags->empty() && !*flow_.isLoadingCollections;
    auto* model = qobject_cast<QStandardItemModel*>(names_->model());
    int current = -1;
    for (int i = 0; i < names_->count(); ++i) {
        const int kind = names_->itemData(i, kindRole).toInt();
        if (kind == standardKind)
            model->item(i)->setEnabled(standardAllowed);
        if (kind == (type.isUser() ? userKind : standardKind) &&
            names_->itemData(i, keyRole) == key)
            current = i;
    }
    names_->setPlaceholderText(qtext(shortened(name)));
    names_->setCurrentIndex(current);
    names_->setEnabled(standardAllowed || !flow_.userCollections->empty());
    delete_->setVisible(!flow_.userCollections->empty());
    delete_->setEnabled(flow_.activeIntervalTags->empty());
}

void CollectionChooser::choose(int index) {
    const auto key = utf8Text(names_->itemData(index, keyRole).toString());
    if (names_->itemData(index, kindRole).toInt() == userKind)
        flow_.switchToUserCollection(key);
    else
        flow_.switchToStandardCollection(key);
    refresh();  // if the choice was rejected or is still loading, the active collection is shown
}

// Deletes the active collection. If a standard one is active, the user chooses from a menu, so that
// a collection without data, which cannot become active, can be deleted as well.
void CollectionChooser::chooseToDelete() {
    const auto& list = *flow_.userCollections;
    const auto& type = *services_.tagLibrary.currentCollectionType;
    const auto found = std::find_if(list.begin(), list.end(), [&](const CollectionInfo& info) {
        return type.isUser() && info.id == type.id;
    });
    if (found != list.end())
        askToDelete(CollectionInfo(*found));
    else
        deletable_->popup(delete_->mapToGlobal(QPoint(0, delete_->height())));
}

void CollectionChooser::askToDelete(const CollectionInfo& collection) {
    const auto& texts = services_.texts;
    services_.panels.confirm(
        texts.format("tagLibraryDeleteCollectionTitle", {shortened(collection.name)}),
        texts.text("tagLibraryDeleteCollectionMessage"), texts.text("deleteButtonTitle"),
        [self = QPointer(this), info = collection](bool confirmed) {
            if (self && confirmed)
                self->services_.tagLibrary.deleteUserCollection(info);
        });
}

}  // namespace tembrix
