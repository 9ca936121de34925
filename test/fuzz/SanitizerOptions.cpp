// An input may claim a great size. The address sanitizer must then answer as an allocator does, so that the
// library refuses the input, rather than end the process.
extern "C" __attribute__((visibility("default"))) const char* __asan_default_options() {
  return "allocator_may_return_null=1:max_allocation_size_mb=2048";
}
