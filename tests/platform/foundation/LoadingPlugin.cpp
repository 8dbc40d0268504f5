// A shared object that calls the program which loads it, in an initialiser.
extern "C" void duringLoading();

namespace {

struct AtLoading {
  AtLoading() { duringLoading(); }
};
const AtLoading atLoading;

}  // namespace
