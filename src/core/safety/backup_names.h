#pragma once

// The names under which the backup keeps what it copies, and the defaults that it reads.
namespace tembrix::backup {

inline constexpr const char* lastSyncDateKey = "DataSync_LastSyncDate";
inline constexpr const char* videosDataKey = "videosData";
inline constexpr const char* collectionsBookmarksKey = "collectionsBookmarks";
inline constexpr const char* indexName = "CollectionsBookmarks.json";
inline constexpr const char* propertyListName = "UserDefaultsBackup.plist";

}  // namespace tembrix::backup
