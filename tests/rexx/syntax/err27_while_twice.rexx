do while a while b
end
