# The formatting view (`telvanix style --json`) against chromium's computed
# styles: the sample project and the view test pages must agree on at least
# 99% of element x property pairs; with the corpus there, so must 500 fp-docs
# pages spread over the whole set (scripts/browser-styles.sh runs that alone).
find_program(TELVANIX_NODE NAMES node nodejs)
find_program(TELVANIX_PYTHON3 NAMES python3)
if(NOT TELVANIX_NODE OR NOT TELVANIX_PYTHON3 OR NOT TARGET telvanix_tool)
  return()
endif()
set(_compare ${TELVANIX_PYTHON3} ${CMAKE_CURRENT_SOURCE_DIR}/compare_styles.py
  --tool $<TARGET_FILE:telvanix_tool> --classes 15)
set(_pages ${PROJECT_SOURCE_DIR}/samples/lantern ${CMAKE_CURRENT_SOURCE_DIR}/computed_style_pages)
if(EXISTS ${PROJECT_SOURCE_DIR}/tests/data/view)
  list(APPEND _pages ${PROJECT_SOURCE_DIR}/tests/data/view)
endif()
add_test(NAME browser.computed_style.sample COMMAND ${_compare} ${_pages})
set_tests_properties(browser.computed_style.sample PROPERTIES LABELS browser TIMEOUT 600
  ENVIRONMENT TELVANIX_CHROMIUM=${TELVANIX_CHROMIUM})

if(NOT DEFINED TELVANIX_CORPUS)
  set(TELVANIX_CORPUS "${PROJECT_SOURCE_DIR}/corpus")
endif()
if(EXISTS "${TELVANIX_CORPUS}/fp-docs")
  add_test(NAME browser.computed_style.fp_docs
    COMMAND ${_compare} --sample 500 ${TELVANIX_CORPUS}/fp-docs)
  set_tests_properties(browser.computed_style.fp_docs PROPERTIES LABELS "browser;corpus" TIMEOUT 3600
    ENVIRONMENT TELVANIX_CHROMIUM=${TELVANIX_CHROMIUM})
endif()
