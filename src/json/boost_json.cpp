// Compiles Boost.JSON from its headers.
#include <boost/json/src.hpp>
