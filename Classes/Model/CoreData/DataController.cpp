#include "Classes/Model/CoreData/DataController.h"

#include "Classes/Interfaces/IApplication.h"
#include "Classes/Model/CoreData/NotebookEntryRepository.h"
#include "Classes/Model/CoreData/ObjectContext.h"
#include "Classes/Model/CoreData/ObjectModel.h"
#include "Classes/Model/CoreData/PersistentStoreCoordinator.h"
#include "Classes/Model/CoreData/StoreError.h"
#include "Platform/Dispatch/DispatchQueue.h"
#include "Platform/Foundation/Bundle.h"
#include "Platform/Foundation/FatalError.h"
#include "Platform/Foundation/Printer.h"

#include <limits>
#include <new>
#include <system_error>
#include <utility>

namespace teralune {
namespace {

ObjectModel loadModel(const PlatformServices& platform) {
    const std::optional<std::filesystem::path> location =
        platform.libraryBundle->pathForResource("DataModel", "momd");
    if (!location) {
        fatalError("Error loading model from bundle");
    }
    Result<ObjectModel> model = ObjectModel::load(*location);
    if (!model) {
        fatalError("Error initializing mom from: " + location->string());
    }
    return std::move(model).value();
}

[[noreturn]] void endWithout(const char* reason, Printer& printer) {
    const std::string message = std::string("Error migrating store: ") + reason;
    printer.print(message);
    fatalError(message);
}

} // namespace

DataController::DataController(IApplication& application) try
    : application_(application)
    , persistentStoreCoordinator_(
          std::make_shared<PersistentStoreCoordinator>(loadModel(application.platform())))
    , managedObjectContext_(
          std::make_shared<ObjectContext>(persistentStoreCoordinator_, application.platform().printer))
    , notebookEntryRepository_(
          std::make_unique<NotebookEntryRepository>(managedObjectContext_, application)) {
    const PlatformServices& platform = application_.platform();
    if (platform.documentsDirectories.empty()) {
        endWithout("The user has no documents folder.", *platform.printer);
    }
    const std::filesystem::path file = platform.documentsDirectories.back() / storeFileName;
    // A queue that has ended drops the work.
    Result<void> opened = storeError(StoreErrorCode::noStore, "No store is open.");
    platform.defaultQueue->sync([&] { opened = persistentStoreCoordinator_->addPersistentStore(file); });
    if (!opened) {
        endWithout(opened.error().localizedDescription.c_str(), *platform.printer);
    }
} catch (const std::bad_alloc&) {
    // Nobody could go on without the store, and the message takes no memory.
    fatalError("Error migrating store: Out of memory.");
}

DataController::~DataController() = default;

std::uint64_t DataController::getStorageBytes() const {
    std::uint64_t total = 0;
    for (const std::filesystem::path& store : persistentStoreCoordinator_->persistentStores()) {
        std::error_code error;
        const std::uint64_t size = std::filesystem::file_size(store, error);
        if (error) {
            fatalError("Error reading the size of " + store.string() + ": " + error.message());
        }
        if (size > std::numeric_limits<std::uint64_t>::max() - total) {
            fatalError("The sizes of the store files are too large to add up");
        }
        total += size;
    }
    return total;
}

void DataController::logout() {
    notebookEntryRepository_->clear();
}

} // namespace teralune
