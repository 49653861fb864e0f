# Private interface target with the warnings, sanitizers and hardening that every piece of this tree is compiled with.
add_library(ky_build_options INTERFACE)

if(MSVC)
  # 4251: members of standard types in exported classes; program and library come from one compiler family anyway.
  target_compile_options(ky_build_options INTERFACE /W4 /wd4251 /utf-8 /permissive- $<$<BOOL:${KYSYSTEM_WERROR}>:/WX>)
else()
  target_compile_options(ky_build_options INTERFACE
    -Wall -Wextra -Wpedantic -Wconversion -Wsign-conversion -Wshadow -Wnon-virtual-dtor -Wcast-align -Wold-style-cast
    -fno-omit-frame-pointer
    # GCC 12 warns of overlap inside its own std::string::insert (its bug 105651).
    $<$<AND:$<CXX_COMPILER_ID:GNU>,$<VERSION_LESS:$<CXX_COMPILER_VERSION>,13>>:-Wno-restrict>
    $<$<BOOL:${KYSYSTEM_WERROR}>:-Werror>)
endif()

if(KYSYSTEM_SANITIZE)
  target_compile_options(ky_build_options INTERFACE -fsanitize=${KYSYSTEM_SANITIZE} -fno-sanitize-recover=all)
  target_link_options(ky_build_options INTERFACE -fsanitize=${KYSYSTEM_SANITIZE})
  target_compile_definitions(ky_build_options INTERFACE KY_SANITIZED)
  # GCC loses track of initialisation through its own instrumentation, inside <regex> for one.
  target_compile_options(ky_build_options INTERFACE $<$<CXX_COMPILER_ID:GNU>:-Wno-maybe-uninitialized>)
elseif(NOT MSVC AND NOT WIN32)
  target_compile_options(ky_build_options INTERFACE -fstack-protector-strong -fstack-clash-protection)
  target_compile_definitions(ky_build_options INTERFACE $<$<CONFIG:Release,RelWithDebInfo>:_FORTIFY_SOURCE=2>)
  target_link_options(ky_build_options INTERFACE -Wl,-z,relro,-z,now,-z,noexecstack)
endif()
if(WIN32)
  target_compile_definitions(ky_build_options INTERFACE
    UNICODE _UNICODE WIN32_LEAN_AND_MEAN NOMINMAX _WIN32_WINNT=0x0A00 WINVER=0x0A00)
endif()
