# Generates the manual pages of the program and of each of its commands from its help.  Runs at
# build time with KOZOR (the program), HELP2MAN and FOLDER.
function(make_page page purpose help)
  execute_process(COMMAND ${HELP2MAN} --no-info --section=1 --manual=KoZor --source=KoZor
    --name=${purpose} --help-option=${help} --output=${FOLDER}/${page}.1 ${KOZOR}
    RESULT_VARIABLE result ERROR_VARIABLE output)
  if(NOT result EQUAL 0)
    message(FATAL_ERROR "${page}: ${output}")
  endif()
  # help2man names every page after the program; use the command's name instead.
  file(READ ${FOLDER}/${page}.1 text)
  string(TOUPPER ${page} title)
  string(REGEX REPLACE "\n\\.TH KOZOR " "\n.TH ${title} " text "${text}")
  string(REGEX REPLACE "\n.SH NAME\nkozor " "\n.SH NAME\n${page} " text "${text}")
  file(WRITE ${FOLDER}/${page}.1 "${text}")
endfunction()

make_page(kozor "LZH archives and backup sets" --help)
execute_process(COMMAND ${KOZOR} --help OUTPUT_VARIABLE help)
# "  add       put files into an archive"
string(REGEX MATCHALL "\n  [a-z]+  +[^\n]+" commands "${help}")
foreach(command ${commands})
  string(REGEX REPLACE "\n  ([a-z]+)  +(.*)" "\\1;\\2" pieces "${command}")
  list(GET pieces 0 name)
  list(GET pieces 1 purpose)
  make_page(kozor-${name} "${purpose}" "${name} --help")
endforeach()
