// A library that loads and is no Cryptoki library.
#ifdef _WIN32
extern "C" __declspec(dllexport) int notCryptoki()
#else
extern "C" __attribute__((visibility("default"))) int notCryptoki()
#endif
{
    return 0;
}
