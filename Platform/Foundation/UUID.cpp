#include "Platform/Foundation/UUID.h"

#include <boost/uuid/random_generator.hpp>
#include <boost/uuid/uuid_io.hpp>

#include <algorithm>

namespace teralune {

std::string makeUUIDString() {
    std::string text = boost::uuids::to_string(boost::uuids::random_generator()());
    std::transform(text.begin(), text.end(), text.begin(), [](char character) {
        return character >= 'a' ? static_cast<char>(character - 'a' + 'A') : character;
    });
    return text;
}

} // namespace teralune
