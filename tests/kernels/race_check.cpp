// Under the thread sanitizer these tests check the kernels for races between the threads of a block as well.
#ifdef __SANITIZE_THREAD__

#    include <lapack/cu/basic>

namespace {

[[maybe_unused]] const bool checked = tarn::race::enabled = true;

} // namespace

#endif
