#pragma once

#include <map>
#include <utility>
#include <vector>

#include "core/export/export_helper.h"
#include "core/export/export_services.h"
#include "fakes/core_project.h"
#include "fakes/export_records.h"

namespace tembrix {

// Drawings set by a test, with pictures of one pixel.
class FakeExportDrawings final : public ExportDrawings {
  public:
    std::vector<ExportDrawing> list;
    std::optional<std::filesystem::path> place;
    std::vector<std::string> unreadable;  // file names

    std::vector<ExportDrawing> screenshots() const override { return list; }
    std::optional<std::filesystem::path> folder() const override { return place; }
    Result<ImageBuffer> picture(const std::filesystem::path& file) const override {
        for (const auto& name : unreadable)
            if (file.filename() == name)
                return Error{"image", 1, "not an image"};
        return ImageBuffer(1, 1);
    }
};

// An open video of 100 seconds with two timelines, and the services of exports on fakes.
struct ExportProject : MatchRecords {
    CoreProject project;
    FakeMedia& media = project.media;
    FakeMovieRenderer& renderer = project.renderer;
    FakePictureRenderer& pictures = project.pictures;
    FakeProcessRunner& processes = project.processes;
    FakeExportDrawings drawings;
    ExportServices& services = project.opened.exports;

    std::filesystem::path source;
    std::filesystem::path temporary = services.directories.temporary;
    std::filesystem::path saved = project.folder.path() / "saved";  // a folder chosen by the user

    ExportProject() {
        services.drawings = &drawings;
        std::filesystem::create_directories(saved);
        project.texts.set("fullControlFileTimelineFile", "video.mp4");
        project.texts.set("exportErrorSourceMissing", "missing {0}");
        project.openVideo();
        source = *project.player.currentVideoURL();
        media.add(source, 100, {1921, 1079});
        project.useCollection("Match", library);
        setStamps({stamp("pass", "Пас", 10, 15, {"long"}, {"half"}), stamp("shot", "Shot", 40, 42)},
                  {stamp("pass", "Пас", 2, 4)});
        processes.behavior = [](const FakeProcessRunner::Call& call) {
            std::ofstream(call.arguments[1]) << "archive";
            return Result<ProcessOutcome>(ProcessOutcome{});
        };
    }

    // Sets the stamps of both timelines and selects the first.
    void setStamps(std::vector<TimelineStamp> first, std::vector<TimelineStamp> second = {}) {
        TimelineLines lines{line("First", std::move(first)), line("Second", std::move(second))};
        const Uuid selected = lines.front()->id;
        project.timeline.replaceLines(std::move(lines));
        project.timeline.selectLine(selected);
    }

    // The names of all files below the temporary folder.
    std::vector<std::string> leftovers() const {
        std::vector<std::string> names;
        if (std::filesystem::exists(temporary))
            for (const auto& entry : std::filesystem::recursive_directory_iterator(temporary))
                if (entry.is_regular_file() && entry.path().extension() != ".lock")
                    names.push_back(entry.path().filename());
        std::sort(names.begin(), names.end());
        return names;
    }
};

// The exports of one window.
struct RunningExport : ExportProject {
    std::unique_ptr<ExportHelper> helper = std::make_unique<ExportHelper>(services);
    int completions = 0;
    std::optional<Error> error;
    std::size_t timersOfOthers = project.scheduler.pendingTimers();

    void start(const std::optional<CutsExportType>& type, bool asPlaylist = false,
               bool withDrawings = false) {
        completions = 0;
        helper->startExport(type, asPlaylist, withDrawings, [this](std::optional<Error> result) {
            EXPECT_TRUE(project.scheduler.isMain());
            ++completions;
            error = std::move(result);
        });
        EXPECT_EQ(completions, 0) << "completed before the caller had its call back";
        project.scheduler.run();
    }
    FakeMovieRenderer::Session& session(std::size_t index = 0) {
        return *renderer.sessions.at(index);
    }
    void succeed(std::size_t index = 0) {
        session(index).succeed();
        project.scheduler.run();
    }
    void fail(std::size_t index, const Error& why) {
        session(index).fail(why);
        project.scheduler.run();
    }
    void cancel() {
        helper->cancelCurrentExport();
        project.scheduler.run();
    }
    // Closes the message about a failed save and returns its text.
    std::string closeAlert() {
        const auto message = project.panels.closeAlert().message;
        project.scheduler.run();
        return message;
    }
    void answerSave(std::optional<std::filesystem::path> target) {
        project.panels.answerSave(std::move(target));
        project.scheduler.run();
    }
    bool noTimerRuns() const { return project.scheduler.pendingTimers() == timersOfOthers; }
    bool endedWell() const { return completions == 1 && !error && !helper->isRunning(); }
    bool endedWith(const std::string& text) const {
        return completions == 1 && error == Error{"NSError", -1, text} && !helper->isRunning();
    }
};

}  // namespace tembrix
