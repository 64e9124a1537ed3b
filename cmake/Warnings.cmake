# Warning flags for the project's own targets; third-party headers come in as system includes.
add_library(sorano_warnings INTERFACE)
target_compile_options(sorano_warnings INTERFACE -Wall -Wextra -Wpedantic)
