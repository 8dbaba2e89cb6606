#include "app/export/choice_list.h"

#include <QHeaderView>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QPainter>
#include <QTreeWidget>
#include <QVBoxLayout>
#include <algorithm>

#include "base/shortened.h"
#include "base/utf8_text.h"

#include "app/theme/theme.h"
#include "app/widgets/accessible.h"
#include "app/widgets/controls.h"
#include "app/widgets/qt_text.h"
#include "app/widgets/text_focus.h"
#include "core/keyboard/text_focus.h"

namespace tembrix {

namespace {

constexpr int nameColumn = 0;
constexpr int actionColumn = 1;
constexpr int placeRole = Qt::UserRole;
constexpr int chipSize = 10;
constexpr int rowHeight = 28;
constexpr QSize listSize{400, 9 * rowHeight};

QIcon chip(const Color& color) {
    QPixmap pixmap(2 * chipSize, 2 * chipSize);
    pixmap.fill(Qt::transparent);
    QPainter painter(&pixmap);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    painter.setBrush(theme::toQColor(color));
    painter.drawRoundedRect(pixmap.rect(), theme::corner, theme::corner);
    QIcon icon(pixmap);
    icon.addPixmap(pixmap, QIcon::Selected);  // the color of a tag is not tinted in a selected row
    return icon;
}

}  // namespace

ChoiceList::ChoiceList(const Texts& texts, FocusStateManager& focus, std::vector<Choice> choices,
                       Mode mode, std::string_view nameKey, std::string_view emptyKey,
                       std::string_view actionKey, QWidget* parent)
    : QWidget(parent),
      texts_(texts),
      choices_(std::move(choices)),
      mode_(mode),
      emptyKey_(emptyKey),
      search_(choices_.size() >= searchedFrom ? new FocusAwareLineEdit(focus, this) : nullptr),
      rows_(new QTreeWidget(this)),
      nothing_(makeLabel(texts, emptyKey, LabelLook::secondary, this)) {
    auto* column = new QVBoxLayout(this);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(theme::spacing);
    if (search_) {
        search_->setClearButtonEnabled(true);
        nameControl(search_, texts, "exportSearch");
        search_->setPlaceholderText(qtext(texts.text("exportSearch")));
        search_->installEventFilter(this);
        connect(search_, &QLineEdit::textChanged, this, &ChoiceList::find);
        column->addWidget(search_);
        setFocusProxy(search_);
    } else {
        setFocusProxy(rows_);
    }
    nameControl(rows_, "exportChoices", qtext(texts.text(nameKey)));
    tellRows(rows_, {.pressedColumn = actionKey.empty() ? 0 : actionColumn});
    rows_->setHeaderHidden(true);
    rows_->setRootIsDecorated(false);
    rows_->setUniformRowHeights(true);
    rows_->setIconSize({chipSize, chipSize});
    rows_->setTextElideMode(Qt::ElideRight);
    rows_->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    rows_->setMinimumSize(listSize);
    rows_->installEventFilter(this);
    addRows(actionKey.empty() ? QString() : qtext(texts.text(actionKey)));
    connect(rows_, &QTreeWidget::itemClicked, this, &ChoiceList::clicked);
    connect(rows_, &QTreeWidget::currentItemChanged, this, [this] { Q_EMIT currentChanged(); });
    column->addWidget(rows_, 1);

    nothing_->setAlignment(Qt::AlignCenter);
    column->addWidget(nothing_, 1);
    nothing_->setMinimumHeight(3 * rowHeight);
    find({});
}

void ChoiceList::addRows(const QString& action) {
    rows_->setColumnCount(action.isEmpty() ? 1 : 2);
    for (std::size_t place = 0; place < choices_.size(); ++place) {
        const auto& choice = choices_[place];
        auto* row = new QTreeWidgetItem(rows_);
        row->setText(nameColumn, qtext(shortened(choice.name)));
        row->setToolTip(nameColumn, qtext(shortened(choice.name)));
        row->setData(nameColumn, placeRole, QVariant::fromValue<qulonglong>(place));
        row->setSizeHint(nameColumn, {0, rowHeight});
        row->setFlags(Qt::ItemIsEnabled | Qt::ItemIsSelectable);
        if (choice.color)
            row->setIcon(nameColumn, chip(*choice.color));
        if (mode_ == Mode::many)
            row->setCheckState(nameColumn, Qt::Unchecked);
        if (choice.hasAction) {
            row->setText(actionColumn, action);
            row->setForeground(actionColumn, theme::accent);
            row->setTextAlignment(actionColumn, Qt::AlignRight | Qt::AlignVCenter);
        }
    }
    if (action.isEmpty())
        return;
    rows_->header()->setStretchLastSection(false);
    rows_->header()->setSectionResizeMode(nameColumn, QHeaderView::Stretch);
    rows_->header()->setSectionResizeMode(actionColumn, QHeaderView::ResizeToContents);
}

std::size_t ChoiceList::placeOf(const QTreeWidgetItem* row) {
    return static_cast<std::size_t>(row->data(nameColumn, placeRole).toULongLong());
}

std::optional<std::size_t> ChoiceList::current() const {
    const auto* row = rows_->currentItem();
    return row && !row->isHidden() ? std::optional(placeOf(row)) : std::nullopt;
}

std::vector<std::size_t> ChoiceList::ticked() const {
    std::vector<std::size_t> places;
    for (int i = 0; i < rows_->topLevelItemCount(); ++i)
        if (rows_->topLevelItem(i)->checkState(nameColumn) == Qt::Checked)
            places.push_back(placeOf(rows_->topLevelItem(i)));
    return places;
}

// Shows only the rows whose names contain the text, and selects the first of them.
void ChoiceList::find(const QString& text) {
    const std::string part = utf8Text(text.trimmed());
    QTreeWidgetItem* first = nullptr;
    for (int i = 0; i < rows_->topLevelItemCount(); ++i) {
        auto* row = rows_->topLevelItem(i);
        const bool found = containsIgnoringCase(choices_[placeOf(row)].name, part);
        row->setHidden(!found);
        if (found && !first)
            first = row;
    }
    rows_->setCurrentItem(first);
    rows_->setVisible(first);
    nothing_->setText(
        qtext(texts_.text(choices_.empty() ? std::string_view(emptyKey_) : "exportNothingFound")));
    nothing_->setAccessibleName(nothing_->text());
    nothing_->setVisible(!first);
    Q_EMIT currentChanged();
}

void ChoiceList::clicked(QTreeWidgetItem* row, int column) {
    if (mode_ == Mode::many)
        toggle(row);
    else if (column == actionColumn && hasAction(placeOf(row)))
        Q_EMIT actionChosen(placeOf(row));
    else
        Q_EMIT chosen(placeOf(row));
}

void ChoiceList::toggle(QTreeWidgetItem* row) {
    const bool on = row->checkState(nameColumn) == Qt::Checked;
    row->setCheckState(nameColumn, on ? Qt::Unchecked : Qt::Checked);
    Q_EMIT tickedChanged();
}

bool ChoiceList::eventFilter(QObject* watched, QEvent* event) {
    if (event->type() != QEvent::KeyPress)
        return false;
    const int key = static_cast<QKeyEvent*>(event)->key();
    // The arrow keys move from the search field into the list.
    if (watched == search_ && (key == Qt::Key_Down || key == Qt::Key_Up)) {
        rows_->setFocus(Qt::OtherFocusReason);
        return true;
    }
    if (mode_ == Mode::one && (key == Qt::Key_Return || key == Qt::Key_Enter)) {
        if (const auto place = current())
            Q_EMIT chosen(*place);
        return true;
    }
    if (mode_ == Mode::many && watched == rows_ && key == Qt::Key_Space) {
        if (current())
            toggle(rows_->currentItem());
        return true;
    }
    return false;
}

}  // namespace tembrix
