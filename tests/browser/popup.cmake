# Popups made by the tool, clicked in chromium (popup_click.mjs, driven by
# puppeteer-core from tests/browser/node_modules): the box shows the target
# topic's text, Escape and a click outside close it, the keyboard opens it.
# The screenshot of the open box is written to popup/popup.png here.
find_program(TELVANIX_NODE NAMES node nodejs)
if(NOT TELVANIX_NODE OR NOT TARGET telvanix_tool)
  return()
endif()
add_test(NAME browser.popup.click
  COMMAND ${TELVANIX_NODE} ${CMAKE_CURRENT_SOURCE_DIR}/popup_click.mjs
          --tool $<TARGET_FILE:telvanix_tool> --site ${PROJECT_SOURCE_DIR}/tests/data/popups/site
          --out ${CMAKE_CURRENT_BINARY_DIR}/popup --chromium ${TELVANIX_CHROMIUM})
set_tests_properties(browser.popup.click PROPERTIES LABELS browser TIMEOUT 180)
