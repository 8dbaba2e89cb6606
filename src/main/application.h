#pragma once

#include <filesystem>
#include <functional>
#include <memory>

class QWidget;

namespace tembrix {

class DataSyncManager;
struct AppServices;

// The composition root: makes the adapters, the core's services and the windows, one object each
// for the process, in the order in which they need one another. Made after the QApplication, on the
// main thread.
class Application {
  public:
    // Before the QApplication is made.
    static void prepare();

    // `resources` holds texts, collections and guides.
    explicit Application(const std::filesystem::path& resources);
    ~Application();

    // The launch: synchronisation in the background, appearance, menu, the list window.
    void start();

    QWidget& listWindow();
    const AppServices& services() const;

  private:
    struct Parts;
    std::unique_ptr<Parts> parts_;
};

// Where the resources stand: beside an installed program, or in the source tree that it was built
// from.
std::filesystem::path findResources();

}  // namespace tembrix
