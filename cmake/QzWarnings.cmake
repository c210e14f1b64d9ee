# Warnings of the toolkit's own code; private, so that a parent project never sees them.
add_library(qz_warnings INTERFACE)
target_compile_options(qz_warnings INTERFACE
  -Wall -Wextra -Wpedantic -Wshadow -Wconversion -Wsign-conversion -Wold-style-cast -Wnon-virtual-dtor
  -Wformat=2 -Wimplicit-fallthrough)
if(QZTOOLKIT_WERROR)
  target_compile_options(qz_warnings INTERFACE -Werror)
endif()

# What a release build defends itself with.
add_library(qz_hardening INTERFACE)
target_compile_options(qz_hardening INTERFACE -fstack-protector-strong
  "-ffile-prefix-map=${PROJECT_SOURCE_DIR}=."
  $<$<CONFIG:Release,RelWithDebInfo>:-D_GLIBCXX_ASSERTIONS>)
if(NOT QZTOOLKIT_SANITIZE)
  target_compile_options(qz_hardening INTERFACE
    $<$<CONFIG:Release,RelWithDebInfo>:-U_FORTIFY_SOURCE>
    $<$<CONFIG:Release,RelWithDebInfo>:-D_FORTIFY_SOURCE=3>)
endif()
target_link_options(qz_hardening INTERFACE -Wl,-z,relro,-z,now)

if(QZTOOLKIT_SANITIZE)
  add_compile_options(-fsanitize=${QZTOOLKIT_SANITIZE} -fno-omit-frame-pointer -fno-sanitize-recover=all)
  add_link_options(-fsanitize=${QZTOOLKIT_SANITIZE})
endif()
