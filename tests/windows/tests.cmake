# Tests of what only Windows has, and the programs that run under Wine.
