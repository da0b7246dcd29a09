# cmake -DPAGE=view_page.html -DSOURCE=view_page.cpp -P EmbedPage.cmake: a text file as a string of the program.
file(READ "${PAGE}" text)
file(WRITE "${SOURCE}"
  "#include \"tools/view_page.h\"\n\nconst std::string_view zrvtool::kViewPage = R\"zrvpage(${text})zrvpage\";\n")
