#pragma once

#include "Platform/Foundation/Result.h"
#include "Platform/PlatformServices.h"

#include <cstdint>
#include <filesystem>
#include <optional>

namespace teralune {

/// What a repair of the notebook store found and did.
struct StoreRepairReport {
    enum class Outcome {
        healthy, ///< the store can be opened as it is; nothing was changed
        repaired ///< a new store has taken the place of the damaged one
    };
    Outcome outcome = Outcome::healthy;
    /// How many notes, and how many notes' cached steps, are in the new store. 0 of a healthy one.
    std::int64_t notes = 0;
    std::int64_t steps = 0;
    /// Where the damaged file lies now, its log beside it. Also set when the store is healthy because this
    /// call has finished a repair that was interrupted.
    std::optional<std::filesystem::path> damagedFile;
};

/// The way out when the store can't be opened or its operations fail for what the file holds: puts a new
/// store in its place with every note, tag, link and cached step that can still be read, of an older version
/// too, and sets the old file aside as "DataModel2.damaged-1.sqlite" (or 2, 3, …) in the same folder. The old
/// file is never removed and nothing is overwritten; all files have mode 0600. The next synchronization
/// fetches what is missing. A sign-out does not empty the file that was set aside: it is the host's to
/// remove.
///
/// For a host to call on any thread, without the services of an application, while nobody has the store open:
/// refused with StoreErrorCode::storeInUse otherwise. Reads the whole file, which takes some seconds for
/// hundreds of megabytes, and needs as much free space as is saved, and that of the whole file too where its
/// first page is damaged. A file that is damaged beyond reading and another program's database give an empty
/// store. A whole store of a newer version is no damage and is refused with StoreErrorCode::newerStore; no
/// store at all with StoreErrorCode::noStore.
///
/// Of the locations it uses the data folder, which holds the store, and the library's bundle. A failure, such
/// as a full disk, leaves the store as it was, and so does a kill at any moment before the new store is
/// whole. Once it is whole the change is decided on: after a kill, and after a failure to rename one of the
/// files, which is returned (systemErrorDomain), whoever opens or repairs the store next finishes it first.
/// Nothing is thrown.
Result<StoreRepairReport> repairStore(const PlatformServices::Locations& locations);

} // namespace teralune
