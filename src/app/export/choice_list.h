#pragma once

#include <QWidget>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "base/color.h"

#include "ports/texts.h"

class QLabel;
class QLineEdit;
class QTreeWidget;
class QTreeWidgetItem;

namespace tembrix {

class FocusStateManager;

// One row of a choice list.
struct Choice {
    std::string name;
    std::optional<Color> color;
    bool hasAction = false;  // the row offers the list's second action
};

// A list to choose one or many rows from. A long list has a search field above it. One row is
// chosen by a click or Return; many are ticked by a click or the space bar. An empty list shows a
// text.
class ChoiceList final : public QWidget {
    Q_OBJECT
  public:
    enum class Mode { one, many };
    static constexpr std::size_t searchedFrom = 9;  // rows

    // `nameKey` is the accessible name of the list and `emptyKey` the text of an empty list. Rows
    // with an action show the text of `actionKey` as a link at their right end.
    ChoiceList(const Texts& texts, FocusStateManager& focus, std::vector<Choice> choices, Mode mode,
               std::string_view nameKey, std::string_view emptyKey, std::string_view actionKey = {},
               QWidget* parent = nullptr);

    std::optional<std::size_t> current() const;  // index in the choices
    std::vector<std::size_t> ticked() const;  // in the order of the choices, including hidden ones
    bool hasAction(std::size_t choice) const { return choices_[choice].hasAction; }

  Q_SIGNALS:
    void chosen(std::size_t choice);
    void actionChosen(std::size_t choice);
    void tickedChanged();
    void currentChanged();

  protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

  private:
    void addRows(const QString& action);
    void find(const QString& text);
    void clicked(QTreeWidgetItem* row, int column);
    void toggle(QTreeWidgetItem* row);
    static std::size_t placeOf(const QTreeWidgetItem* row);

    const Texts& texts_;
    const std::vector<Choice> choices_;
    const Mode mode_;
    const std::string emptyKey_;
    QLineEdit* search_;  // null for a short list
    QTreeWidget* rows_;
    QLabel* nothing_;
};

}  // namespace tembrix
