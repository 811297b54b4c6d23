// Under the thread sanitizer these tests check the kernels for races between the threads of a block as well.
#include <lapack/cu/basic>

#ifdef __SANITIZE_THREAD__
namespace {

[[maybe_unused]] const bool checked = tarn::race::enabled = true;

} // namespace
#endif
