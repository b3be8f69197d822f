# embed_scenarios(OUTPUT NAME...): writes a source file that holds scenarios/NAME.toml as text, so that the
# built-in scenarios are the very files that users read and copy.
function(embed_scenarios output)
  set(SCENARIO_LIST "")
  foreach(name IN LISTS ARGN)
    set(path ${CMAKE_CURRENT_SOURCE_DIR}/scenarios/${name}.toml)
    set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${path})
    file(READ ${path} text)
    string(APPEND SCENARIO_LIST "    {\"${name}\", R\"toml(${text})toml\"},\n")
  endforeach()
  configure_file(${CMAKE_CURRENT_SOURCE_DIR}/builtins.cpp.in ${output} @ONLY)
endfunction()
