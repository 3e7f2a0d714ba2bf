do while 'x'
end
