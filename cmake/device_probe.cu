// Succeeds where a CUDA device answers.
#include <cuda_runtime.h>

int main()
{
    int devices = 0;
    return cudaGetDeviceCount(&devices) == cudaSuccess && devices > 0 ? 0 : 1;
}
