// Boost.JSON itself.
#include <boost/json/src.hpp>
