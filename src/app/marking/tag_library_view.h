#pragma once

#include <QWidget>
#include <map>
#include <string>
#include <vector>

#include "base/signal.h"

#include "app/marking/tag_panel_services.h"
#include "core/records/annotation_records.h"

class QVBoxLayout;

namespace tembrix {

class FlowLayout;
class FoldSection;
class MarkingFlow;
class TagButton;
class TimeEventChip;

// The tag panel: everything of the active collection that the user can mark with. The flow, which
// must outlive the view, decides what a press does.
class TagLibraryView final : public QWidget {
    Q_OBJECT
  public:
    TagLibraryView(const TagPanelServices& services, MarkingFlow& flow, QWidget* parent = nullptr);
    ~TagLibraryView() override;

  private:
    void rebuild();
    void addTimeEvents(QVBoxLayout* column);
    void addGroup(QVBoxLayout* column, const TagGroup& group);
    TagButton* makeTagButton(const Tag& tag, QWidget* parent);
    void showExpanded();
    void showCounts();
    void showIntervals();
    void showOpenIntervals();
    void showTimeEvents();
    void showEditorMode();

    const TagPanelServices services_;
    MarkingFlow& flow_;
    CollectionLists shown_;
    bool eventsExpanded_ = true;
    QVBoxLayout* body_;
    // The open intervals once more, beneath the scrolled groups: always in sight and reach.
    QWidget* open_;
    FlowLayout* openFlow_;
    std::vector<TagButton*> openButtons_;
    QWidget* content_ = nullptr;
    // A tag may stand in two groups; damaged collections repeat the other ids, too.
    std::multimap<std::string, FoldSection*> groups_;
    std::multimap<std::string, TagButton*> buttons_;
    std::multimap<std::string, TimeEventChip*> chips_;
    std::vector<Subscription> subscriptions_;
};

}  // namespace tembrix
