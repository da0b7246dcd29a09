# cmake -DFILE=view_page.html -DNAME=kViewPage -DSOURCE=kViewPage.cpp -P EmbedText.cmake: a text file as a string of the
# program.
file(READ "${FILE}" text)
file(WRITE "${SOURCE}"
  "#include \"tools/embedded.h\"\n\nconst std::string_view zrvtool::${NAME} = R\"zrvtext(${text})zrvtext\";\n")
