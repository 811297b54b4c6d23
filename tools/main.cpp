#include "command_line.h"
#include "cpu_blas.h"

int main(int argc, char** argv)
{
    tarn::tool::preferFastCpuBlas(argv);
    return tarn::tool::runTool(argc, argv);
}
