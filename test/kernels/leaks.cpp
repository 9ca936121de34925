// One leak each, of the kinds that a kernel object must not have.
namespace vexo::avx2 {

#if defined(WEAK_FUNCTION)
template <class T>
T smaller(T a, T b) {
  return b < a ? b : a;
}
int kernel(int a, int b) {
  return smaller(a, b);
}
#elif defined(FOREIGN_GLOBAL)
}
int helper(int a) {
  return a + 1;
}
namespace vexo::avx2 {
int kernel(int a) {
  return helper(a);
}
#elif defined(START_UP_CODE)
int kernel(int a);
static const int tabulated = kernel(3);
int kernel(int a) {
  return a * tabulated;
}
#elif defined(FOREIGN_CALL)
extern "C" double exp(double);
double kernel(double a) {
  return exp(a);
}
#endif

}  // namespace vexo::avx2
