#include "handles.h"

namespace tarn::soft {

// Made when the library loads, hence alive until every user of the library is gone.
static HandleTable<cudaStream_t, Stream> streamTable;
static HandleTable<cublasHandle_t, BlasContext> blasHandleTable;

HandleTable<cudaStream_t, Stream>& streams() { return streamTable; }

HandleTable<cublasHandle_t, BlasContext>& blasHandles() { return blasHandleTable; }

} // namespace tarn::soft
