# The export table is one list with one export per line: its ordinal, its symbol and, for class
# members, a decorated name that only people and tests read. The linker's version script and the
# table of vxExportAddress are generated from this list, so that the two cannot disagree.

function(vx_read_exports list_file out_lines)
  set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${list_file})
  file(STRINGS ${list_file} lines REGEX "^[0-9]")
  set(${out_lines} ${lines} PARENT_SCOPE)
endfunction()

# vx_export_only(TARGET LIST ABI_LIST): TARGET exports only the symbols of the export table and of
# ABI_LIST, a plain list of further symbols.
function(vx_export_only target list_file abi_file)
  vx_read_exports(${list_file} lines)
  set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${abi_file})
  file(STRINGS ${abi_file} abi_symbols REGEX "^_")
  set(script "{\nglobal:\n    vxExportAddress;\n")
  foreach(line IN LISTS lines)
    string(REGEX REPLACE "^[0-9]+ +([^ ]+).*$" "\\1" symbol "${line}")
    string(APPEND script "    ${symbol};\n")
  endforeach()
  foreach(symbol IN LISTS abi_symbols)
    string(APPEND script "    ${symbol};\n")
  endforeach()
  string(APPEND script "local:\n    *;\n};\n")
  set(map ${CMAKE_CURRENT_BINARY_DIR}/exports.map)
  file(CONFIGURE OUTPUT ${map} CONTENT "${script}" @ONLY)
  # Calls inside the library do not need the procedure linkage table.
  target_link_options(${target} PRIVATE
    -Wl,--version-script=${map} -Wl,-Bsymbolic-functions)
  set_property(TARGET ${target} APPEND PROPERTY LINK_DEPENDS ${map})
endfunction()

# vx_export_table(LIST OUTPUT): one line VX_EXPORT(ordinal, symbol) per export.
function(vx_export_table list_file output)
  vx_read_exports(${list_file} lines)
  set(table "")
  foreach(line IN LISTS lines)
    string(REGEX REPLACE "^([0-9]+) +([^ ]+).*$" "VX_EXPORT(\\1, \\2)" entry "${line}")
    string(APPEND table "${entry}\n")
  endforeach()
  file(CONFIGURE OUTPUT ${output} CONTENT "${table}" @ONLY)
endfunction()
