# vesk_plugin(NAME LIBRARY DESCRIPTION): a plug-in of the player, its entry in getPlugin.cpp and its
# insides in the library, beside its description, which gets the version of the project, in the
# folder that the player looks into.
function(vesk_plugin name library description)
  add_library(${name} MODULE getPlugin.cpp)
  target_link_libraries(${name} PRIVATE ${library})
  set_target_properties(${name} PROPERTIES LIBRARY_OUTPUT_DIRECTORY ${VESK_PLUGIN_DIR}
    CXX_VISIBILITY_PRESET hidden VISIBILITY_INLINES_HIDDEN ON)
  configure_file(${description} ${VESK_PLUGIN_DIR}/${description} @ONLY)
endfunction()
