#include "module.h"

NB_MODULE(_core, m)
{
    m.doc() = "The routines of tarn_lapack on arrays of NumPy and of the device.";
    tarn::python::addSolvers(m);
    tarn::python::addFactorisations(m);
    tarn::python::addBlas(m);
    tarn::python::addDeviceArrays(m);
    tarn::python::addInformation(m);
}
