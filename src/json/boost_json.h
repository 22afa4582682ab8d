#pragma once

// Included before every header of Boost.JSON. Boost records the source location of each parse
// error, as pointers that are relocated at the start of every run. Nothing reads these locations,
// so they are empty here.
#include <boost/assert/source_location.hpp>
#undef BOOST_CURRENT_LOCATION
#define BOOST_CURRENT_LOCATION ::boost::source_location(nullptr, 0, nullptr)
