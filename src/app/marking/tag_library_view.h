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
class MarkTargetBar;
class TagButton;
class TimeEventChip;

// The tag panel: shows everything in the active collection that the user can mark with. The flow
// decides what a press does; it must outlive the view.
class TagLibraryView final : public QWidget {
    Q_OBJECT
  public:
    TagLibraryView(const TagPanelServices& services, MarkingFlow& flow, QWidget* parent = nullptr);
    ~TagLibraryView() override;

  private:
    void followDensity();
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
    bool compact_ = false;
    QVBoxLayout* top_;
    MarkTargetBar* target_;
    QVBoxLayout* body_;
    // The open intervals are repeated below the scrolled groups, where they are always visible.
    QWidget* open_;
    FlowLayout* openFlow_;
    std::vector<TagButton*> openButtons_;
    QWidget* content_ = nullptr;
    FlowLayout* rows_ = nullptr;  // of the content, if it is compact
    // A tag can be in two groups. In damaged collections the other ids can repeat as well.
    std::multimap<std::string, FoldSection*> groups_;
    std::multimap<std::string, TagButton*> buttons_;
    std::multimap<std::string, TimeEventChip*> chips_;
    std::vector<Subscription> subscriptions_;
};

}  // namespace tembrix
