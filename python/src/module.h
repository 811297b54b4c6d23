// The parts of the extension module.
#pragma once

#include <nanobind/nanobind.h>

namespace tarn::python {

void addSolvers(nanobind::module_& m);
void addFactorisations(nanobind::module_& m);
void addBlas(nanobind::module_& m);
void addDeviceArrays(nanobind::module_& m);
void addInformation(nanobind::module_& m);

} // namespace tarn::python
