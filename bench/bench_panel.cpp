// The tag panel beside 30 user collections, each of 40 tags in 6 groups, 60 labels and 10 events,
// in a project with 10,000 stamps: what a switch of collection and a press keep the event loop busy
// with, in milliseconds. The last column is processor time of this thread alone, for a busy
// machine.

#include <QApplication>
#include <QFile>
#include <QJsonDocument>
#include <QJsonObject>
#include <algorithm>
#include <chrono>
#include <cstdio>
#include <ctime>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "app/app_project.h"
#include "app/collections/tag_library_view.h"
#include "app/theme/theme.h"
#include "core/annotation/marking_flow.h"

namespace tembrix {
namespace {

constexpr int collectionCount = 30;
constexpr int repetitions = 60;

struct NoMap final : FieldMapQuestion {
    bool canAsk() const override { return false; }
    void openFieldMapSelection(const Tag&, const Bytes&, std::function<void(Point)>) override {}
};

std::string collectionName(int number) {
    return "Collection " + std::to_string(number);
}

void saveCollection(CollectionServices& services, int number) {
    const char* colors[] = {"30D158", "0A84FF", "FF9F0A", "BF5AF2", "FFD60A", "64D2FF", "8E8E93"};
    const char keys[] = "QWERTYUIOPASDFGHJKLZXCVBNM";
    CustomCollectionManager collection(services);
    collection.setCollectionName(collectionName(number));
    std::vector<std::string> labelGroups;
    for (int i = 0; i < 60; ++i) {
        if (i % 10 == 0)
            labelGroups.push_back(collection.addLabelGroup("Labels " + std::to_string(i)).id);
        collection.addLabel("Label " + std::to_string(i), "", labelGroups.back());
    }
    std::vector<std::string> groups;
    for (int i = 0; i < 6; ++i)
        groups.push_back(collection.addTagGroup("Group " + std::to_string(i)).id);
    for (int i = 0; i < 40; ++i) {
        TagFormData form;
        form.name = "Tag " + std::to_string(number) + "." + std::to_string(i);
        form.hexColor = colors[(number + i) % 7];
        form.defaultTimeBefore = 5;
        form.defaultTimeAfter = 3;
        if (i < 26)
            form.hotkey = std::string(1, keys[i]);
        form.isInterval = i % 8 == 0;
        const auto tag = collection.addTag(form, groups[static_cast<std::size_t>(i) % 6]);
        // The last tags ask for labels, so that a press of one of the first makes its stamp.
        if (i < 30)
            continue;
        form.hotkey = tag->hotkey;
        form.selectedLabelGroups = labelGroups;
        collection.updateTag(tag->id, form);
    }
    for (int i = 0; i < 10; ++i)
        collection.addTimeEvent("Event " + std::to_string(i));
    collection.saveCollection();
}

TimelineLines manyStamps() {
    TimelineLines lines;
    for (int l = 0; l < 50; ++l) {
        TimelineLine line{Uuid::random(), "Line", {}, {}};
        for (int s = 0; s < 200; ++s) {
            TimelineStamp stamp;
            stamp.id = Uuid::random();
            stamp.idTag = "tag " + std::to_string(s % 40);
            stamp.timeStartSeconds = s * 20;
            stamp.timeFinishSeconds = s * 20 + 8;
            line.stamps.push_back(stamp);
        }
        lines.push_back(line);
    }
    return lines;
}

void readTexts(FakeTexts& texts) {
    QFile file(TEMBRIX_RESOURCES "/texts/en.json");
    if (!file.open(QIODevice::ReadOnly))
        return;
    const QJsonObject all = QJsonDocument::fromJson(file.readAll()).object();
    for (auto it = all.begin(); it != all.end(); ++it)
        texts.set(it.key().toStdString(), it.value().toString().toStdString());
}

struct Panel {
    AppProject app;
    NoMap map;
    std::unique_ptr<MarkingFlow> flow;
    std::unique_ptr<TagLibraryView> view;

    Panel() {
        readTexts(app.texts);
        for (int i = 0; i < collectionCount; ++i)
            saveCollection(app.collections, i);
        app.events.post(events::CollectionDataChanged{});
        app.scheduler.advance(1);
        app.openVideo();
        app.players.player()->setDuration(5400);
        app.timeline.replaceLines(manyStamps());
        app.timeline.selectedLineID.set(app.timeline.lines->back()->id);
        flow = std::make_unique<MarkingFlow>(app.timeline, app.tagLibrary, app.markupModes,
                                             app.collections, app.player, map, app.scheduler,
                                             app.events);
        view = std::make_unique<TagLibraryView>(app.services, *flow);
        view->resize(900, 1000);
        view->show();
        settle();
    }

    void settle() {
        for (int i = 0; i < 4; ++i) {
            app.scheduler.advance(0.3);
            QApplication::processEvents();
            QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        }
    }
};

class Times {
  public:
    void measure(const std::function<void()>& work) {
        const auto start = std::chrono::steady_clock::now();
        const double processorStart = processorNow();
        work();
        processor_.push_back(processorNow() - processorStart);
        times_.push_back(
            std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - start)
                .count());
    }
    void print(const char* what) {
        std::sort(times_.begin(), times_.end());
        std::sort(processor_.begin(), processor_.end());
        std::printf("%-56s %8.2f %8.2f %8.2f %8.2f\n", what, at(times_, 0.5), at(times_, 0.95),
                    times_.back(), at(processor_, 0.95));
    }

  private:
    static double processorNow() {
        timespec now{};
        clock_gettime(CLOCK_THREAD_CPUTIME_ID, &now);
        return static_cast<double>(now.tv_sec) * 1e3 + static_cast<double>(now.tv_nsec) / 1e6;
    }
    static double at(const std::vector<double>& sorted, double part) {
        return sorted[static_cast<std::size_t>(part * static_cast<double>(sorted.size() - 1))];
    }

    std::vector<double> times_;
    std::vector<double> processor_;
};

// One turn of the event loop each: the panel is built anew, then laid out and painted.
void switches(Panel& panel) {
    Times build, show;
    for (int i = 0; i < repetitions; ++i) {
        build.measure([&] { panel.flow->switchToUserCollection(collectionName(i % 30)); });
        show.measure([] { QApplication::processEvents(); });
        panel.settle();
    }
    build.print("switch to a user collection: built");
    show.print("switch to a user collection: laid out and painted");
}

void standardSwitches(Panel& panel) {
    Times build, show, longest;
    for (int i = 0; i < repetitions; ++i) {
        const char* name = i % 2 == 0 ? "Football" : "Hockey";
        build.measure([&] { panel.flow->switchToStandardCollection(name); });
        show.measure([] { QApplication::processEvents(); });
        panel.app.scheduler.step();  // the load itself, which runs in the background
        longest.measure([&] { panel.app.scheduler.run(); });
        panel.settle();
    }
    build.print("switch to a standard collection: built");
    show.print("switch to a standard collection: laid out and painted");
    longest.print("merged lists of 30 collections taken over");
}

void presses(Panel& panel) {
    Times press, show;
    panel.flow->switchToUserCollection(collectionName(1));
    panel.settle();
    const auto& tags = panel.app.tagLibrary.active->tags;
    for (int i = 0; i < repetitions; ++i) {
        panel.app.players.player()->advanceTo(i * 30.0);
        const Tag tag = tags[1 + static_cast<std::size_t>(i) % 7];
        press.measure([&] { panel.flow->handleTagTap(tag); });
        show.measure([&] {
            panel.app.scheduler.run();
            QApplication::processEvents();
        });
        panel.settle();
    }
    press.print("press of a button: stamp made");
    show.print("press of a button: counted and painted");
}

}  // namespace
}  // namespace tembrix

int main(int argc, char** argv) {
    if (!qEnvironmentVariableIsSet("DISPLAY"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication application(argc, argv);
    tembrix::theme::applyTheme(application);
    std::printf("%-56s %8s %8s %8s %8s\n", "Tag panel beside 30 user collections, ms", "median",
                "95 %", "worst", "95 % cpu");
    tembrix::Panel panel;
    tembrix::switches(panel);
    tembrix::standardSwitches(panel);
    tembrix::presses(panel);
}
