// Boost.JSON itself, for systems that have its headers but no static library of it.
#include <boost/json/src.hpp>
