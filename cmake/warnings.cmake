# What every target of the project is compiled with. Link against `warnings`. GCC 12 finds overlaps in its
# own std::string where there are none, so -Wrestrict is off.
add_library(warnings INTERFACE)
target_compile_options(
  warnings
  INTERFACE -Wall
            -Wextra
            -Wpedantic
            -Wshadow
            -Wconversion
            -Wsign-conversion
            -Wold-style-cast
            -Wcast-align
            -Wcast-qual
            -Wformat=2
            -Wnon-virtual-dtor
            -Woverloaded-virtual
            -Wundef
            -Wunused
            $<$<CXX_COMPILER_ID:GNU>:-Wduplicated-branches
            -Wduplicated-cond
            -Wlogical-op
            -Wno-restrict>
            $<$<BOOL:${INSTALLER_WERROR}>:-Werror>)
