#pragma once

#include <map>
#include <optional>
#include <string>

#include "core/records/annotation_records.h"
#include "core/records/markup_mode.h"

// The table of all events in the process, each with its literal name, its senders and its
// receivers. Events are posted and observed on the main thread. See EventBus.
namespace tembrix::events {

// The hot key of a tag was pressed.
// HotKeyManager -> tag panel
struct ShowLabelSheet {
    static constexpr const char* name = "showLabelSheet";
    Tag tag;
};
// The hot key of a label was pressed while a sheet is open.
// HotKeyManager -> selection sheet
struct LabelHotkeyPressed {
    static constexpr const char* name = "labelHotkeyPressed";
    std::string labelId;
    std::string tagId;
};
// The name of a tag has changed.
// collection model, tag library -> timeline store, tag library
struct TagUpdated {
    static constexpr const char* name = "tagUpdated";
    std::optional<std::string> tagId;
    std::optional<std::string> newName;
};
// All collections are being loaded in the background.
// TagLibraryManager -> tag panel
struct CollectionsLoadingStarted {
    static constexpr const char* name = "collectionsLoadingStarted";
};
struct CollectionsLoadingFinished {
    static constexpr const char* name = "collectionsLoadingFinished";
};
// The collection of this name has changed or, without a name, any of them.
// index, collection model, tag library, restore -> tag library, tag panel
struct CollectionDataChanged {
    static constexpr const char* name = "collectionDataChanged";
    std::optional<std::string> collectionName;
};
// The active lists were replaced.
// TagLibraryManager -> tag panel
struct CurrentCollectionRefreshed {
    static constexpr const char* name = "currentCollectionRefreshed";
};
// Disables and enables hot keys.
// WindowsManager -> HotKeyManager
struct CollectionEditorOpened {
    static constexpr const char* name = "collectionEditorOpened";
};
struct CollectionEditorClosed {
    static constexpr const char* name = "collectionEditorClosed";
};
// The stored markup mode was set.
// setMarkupMode -> control window, tag panel
struct MarkupModeChanged {
    static constexpr const char* name = "markupModeChanged";
    std::optional<MarkupMode> mode;
};
// The stamps per tag have to be counted again.
// timeline store, tag panel -> tag panel
struct StampCountsChanged {
    static constexpr const char* name = "stampCountsChanged";
};
// The hover text has changed.
// control window -> control window
struct TimelineStampHoverChanged {
    static constexpr const char* name = "timelineStampHoverChanged";
    std::optional<std::string> stampInfo;
};
// The drawing editor was opened or closed on the player.
// player and its window -> HotKeyManager, control window, tag panel
struct EditorModeChanged {
    static constexpr const char* name = "editorModeChanged";
    std::optional<bool> active;
};
// A key of the drawing editor was pressed.
// HotKeyManager -> drawing canvas
struct EditorEnterKeyPressed {
    static constexpr const char* name = "editorEnterKeyPressed";
};
struct EditorCopyKeyPressed {
    static constexpr const char* name = "editorCopyKeyPressed";
};
struct EditorPasteKeyPressed {
    static constexpr const char* name = "editorPasteKeyPressed";
};
struct EditorUndoKeyPressed {
    static constexpr const char* name = "editorUndoKeyPressed";
};
// A drawing is shown or hidden.
// player window -> control window
struct ScreenshotDisplayChanged {
    static constexpr const char* name = "screenshotDisplayChanged";
    std::optional<bool> active;
};
// A text box gets or loses the keyboard focus.
// drawing editor -> HotKeyManager
struct TextBoxEditingChanged {
    static constexpr const char* name = "textBoxEditingChanged";
    std::optional<bool> active;
};
// Playback control of the viewer.
// HotKeyManager, WindowsManager -> viewer
struct ToggleViewerPlayer {
    static constexpr const char* name = "toggleViewerPlayer";
};
struct StopViewerPlayer {
    static constexpr const char* name = "stopViewerPlayer";
};
struct CloseViewerWindow {
    static constexpr const char* name = "closeViewerWindow";
};
struct CreatePlaylistComposition {
    static constexpr const char* name = "createPlaylistComposition";
};
struct SeekViewerPlayerForward {
    static constexpr const char* name = "seekViewerPlayerForward";
};
struct SeekViewerPlayerBackward {
    static constexpr const char* name = "seekViewerPlayerBackward";
};
// A sheet with a text field, which blocks hot keys, is opened or closed.
// sheets -> HotKeyManager
struct AddLineSheetAppeared {
    static constexpr const char* name = "AddLineSheetAppeared";
};
struct EditTimelineSheetAppeared {
    static constexpr const char* name = "EditTimelineSheetAppeared";
};
struct SheetDismissed {
    static constexpr const char* name = "SheetDismissed";
};

// "openEditorForScreenshot" and "playSingleTag" will be added together with the drawings and the
// viewer, whose records they contain.

}  // namespace tembrix::events
