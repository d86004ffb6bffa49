#pragma once

#include "Classes/Model/CoreData/NotebookEntry.h"

#include <boost/json/object.hpp>

#include <string>

namespace teralune {

/// A note of the notebook, as JSON and as one or two lines for people.
boost::json::object noteRecord(const NotebookEntry& note);
std::string noteText(const NotebookEntry& note);

} // namespace teralune
