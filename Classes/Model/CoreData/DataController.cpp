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

} // namespace

DataController::DataController(IApplication& application)
    : application_(application)
    , persistentStoreCoordinator_(
          std::make_shared<PersistentStoreCoordinator>(loadModel(application.platform())))
    , managedObjectContext_(
          std::make_shared<ObjectContext>(persistentStoreCoordinator_, application.platform().printer))
    , notebookEntryRepository_(
          std::make_unique<NotebookEntryRepository>(managedObjectContext_, application)) {
    application.platform().defaultQueue->sync([this] { openStore(); });
}

DataController::~DataController() = default;

void DataController::openStore() {
    const PlatformServices& platform = application_.platform();
    const Result<void> opened = platform.documentsDirectories.empty()
                                    ? Result<void>(storeError(StoreErrorCode::noDocumentsDirectory,
                                                              "The user has no documents folder."))
                                    : persistentStoreCoordinator_->addPersistentStore(
                                          platform.documentsDirectories.back() / storeFileName);
    if (!opened) {
        const std::string message = "Error migrating store: " + opened.error().localizedDescription;
        platform.printer->print(message);
        fatalError(message);
    }
}

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
