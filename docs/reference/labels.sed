# The labels of a comment (Shape, Errors, ...) begin an item of a list each; else they would run into one paragraph.
s/^( *\/\/\/) (Shape|Units|Errors|Edge|Cost|Threads|Source): +/\1 - **\2:** /
