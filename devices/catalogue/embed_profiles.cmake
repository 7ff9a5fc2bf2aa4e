# Writes OUTPUT, a source file that holds the text of each of PROFILES.
set(rows "")
foreach(profile IN LISTS PROFILES)
  get_filename_component(name ${profile} NAME)
  file(READ ${profile} text)
  string(FIND "${text}" ")toml\"" end_of_literal)
  if(NOT end_of_literal EQUAL -1)
    message(FATAL_ERROR "${profile}: the characters )toml\" would end the text early; leave them out")
  endif()
  string(APPEND rows "    {\"${name}\", R\"toml(${text})toml\"},\n")
endforeach()
if(rows STREQUAL "")
  message(FATAL_ERROR "no device profile to embed into ${OUTPUT}")
endif()
file(WRITE ${OUTPUT} "// Made from devices/profiles; change it there.
#include \"devices/catalogue/built_in_profiles.h\"

namespace fliglaf {
namespace {

constexpr ProfileText kProfiles[] = {
${rows}};

}  // namespace

std::span<const ProfileText> BuiltInProfiles() { return kProfiles; }

}  // namespace fliglaf
")
