#pragma once

#include <filesystem>
#include <functional>
#include <memory>

class QWidget;

namespace tembrix {

class CoreServices;

// The program: makes the adapters, the services of the core on them, and the windows. Created after
// the QApplication, on the main thread.
class Application {
  public:
    // Before the QApplication is made.
    static void prepare();

    // `resources` holds texts, collections and guides.
    explicit Application(std::filesystem::path resources);
    ~Application();

    // Makes everything, starts the services and shows the list window. Called once, before anything
    // below.
    void start();
    void bringForward();  // the list window, also one that was closed

    QWidget& listWindow();
    CoreServices& core() const;

  private:
    struct Parts;
    std::filesystem::path resources_;
    std::unique_ptr<Parts> parts_;
};

// The resources of an installed program, or those of the source tree that the program was built in.
std::filesystem::path findResources();

}  // namespace tembrix
