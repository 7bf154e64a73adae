// pybind11 beside Qt: Python's headers use the word `slots`, which Qt defines as a keyword.
#pragma once

#pragma push_macro("slots")
#undef slots
#include <pybind11/pybind11.h>
#include <pybind11/stl.h>
#pragma pop_macro("slots")
