// A label that is never seen, right before a list that has none of its own: screen readers announce the list by it.
#pragma once

#define IDC_HIDDEN_LABEL 400
