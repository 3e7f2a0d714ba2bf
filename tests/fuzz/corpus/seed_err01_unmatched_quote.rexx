/* a string left open */
say 'hello
say 'done'
