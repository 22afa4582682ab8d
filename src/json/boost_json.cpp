// Compiles Boost.JSON from its headers.
#include "json/boost_json.h"

#include <boost/json/src.hpp>
