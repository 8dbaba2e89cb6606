#pragma once

#include <filesystem>
#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace tembrix {

struct OpenPanelRequest {
    std::string title;
    std::string message;
    std::vector<std::string> extensions;  // without dots, lower case; empty allows all
    std::string kindName;                 // name of the kind of file, shown in the filter
    bool multiple = false;
    bool folders = false;
};

struct SavePanelRequest {
    std::string title;
    std::string defaultName;
    std::string extension;    // without dot; appended if the user types none
    std::string window = {};  // the name of the window that it belongs to; empty: the active one
    std::filesystem::path folder = {};  // where it starts; if it is missing, in the last folder
};

// Asks the user questions. A call returns immediately. Its answer is delivered later on the main
// thread, exactly once. If the user cancels or the window of the question closes, the answer is
// empty.
class Panels {
  public:
    virtual ~Panels() = default;
    virtual void open(const OpenPanelRequest& request,
                      std::function<void(std::vector<std::filesystem::path>)> answer) = 0;
    virtual void save(const SavePanelRequest& request,
                      std::function<void(std::optional<std::filesystem::path>)> answer) = 0;
    virtual void alert(const std::string& title, const std::string& message,
                       std::function<void()> closed = {}, const std::string& window = {}) = 0;
    virtual void confirm(const std::string& title, const std::string& message,
                         const std::string& confirmText, std::function<void(bool)> answer) = 0;
    // Shows a folder in the system's file browser, or opens a page or a file with the desktop's
    // program for it. `failed` is called if that does not succeed.
    virtual void reveal(const std::filesystem::path& folder, std::function<void()> failed = {}) = 0;
    virtual void browse(const std::string& url, std::function<void()> failed = {}) = 0;
};

}  // namespace tembrix
